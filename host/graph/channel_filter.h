#pragma once

#include <array>
#include <cstddef>
#include <memory>

#include "framework/base/base_filter.h"
#include "framework/base/com_ptr.h"
#include "host/graph/channel.h"
#include "host/graph/packet_input_pin.h"
#include "host/graph/packet_output_pin.h"
#include "host/graph/packet_taker.h"
#include "host/graph/sent_numbers.h"

namespace mvrtpfec {

/// A lossy network for the three streams of a protected stream: inputs and outputs in the order of
/// StreamPort. It has no thread; one thread delivers on all inputs, and what the network lets out leaves
/// inside that call.
class ChannelFilter final : public CBaseFilter, public PacketTaker {
public:
    static constexpr std::size_t pinCount = 3;

    /// Throws GraphError and what checkChannel throws.
    static CComPtr<ChannelFilter> create(const ChannelConfig& config);

    int GetPinCount() override { return 2 * pinCount; }
    CBasePin* GetPin(int index) override;

    const Channel& channel() const { return channel_; }

    ChannelFilter(const ChannelConfig& config, HRESULT* result);

private:
    /// Fails when downstream has refused a packet.
    HRESULT take(std::size_t pin, ConstRtpPacketView packet) noexcept override;
    /// After the last stream's end the network lets out what is under way, and the streams end downstream.
    HRESULT endStream(std::size_t pin) noexcept override;
    bool isSent(StreamPort port, ConstRtpPacketView packet);
    void letOut(StreamPort port, const std::vector<std::uint8_t>& packet);

    CCritSec lock_;
    std::array<std::unique_ptr<PacketInputPin>, pinCount> inputs_;
    std::array<std::unique_ptr<PacketOutputPin>, pinCount> outputs_;
    SentNumbers sent_;
    Channel channel_;
    std::size_t ended_ = 0;
    HRESULT delivered_ = S_OK;  ///< the first failure since the input was called
};

}  // namespace mvrtpfec
