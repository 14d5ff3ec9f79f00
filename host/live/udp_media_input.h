#pragma once

#include <deque>
#include <memory>

#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>

#include "host/live/media_input.h"
#include "host/net/packet_reader.h"

namespace mvrtpfec {

/// Media that come over the network, passed on as they come.
class UdpMediaInput final : public MediaInput {
public:
    enum class Carriage { bare, rtp };

    /// Throws UsageError, std::system_error.
    UdpMediaInput(const asio::ip::udp::endpoint& local, Carriage carriage, const MediaInputOptions& options);

    Got read(DuePacket& next) override;
    bool wouldWait() const override { return waiting_.empty(); }
    std::uint64_t leftOut() const override { return leftOut_ + reader_.tooLong(); }

private:
    void wait();
    void take(std::unique_ptr<RtpPacket> datagram);
    std::unique_ptr<RtpPacket> wrapped(ConstRtpPacketView transportPackets);

    Carriage carriage_;
    asio::io_context context_;
    asio::ip::udp::socket socket_;
    PacketReader reader_;
    std::deque<std::unique_ptr<RtpPacket>> waiting_;
    std::uint16_t number_;
    std::uint32_t ssrc_;
    std::uint64_t leftOut_ = 0;
};

}  // namespace mvrtpfec
