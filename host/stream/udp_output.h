#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>

#include "framework/base/com_ptr.h"
#include "framework/pins/output_pin.h"
#include "rtp_media/chain/simple_media_data.h"

namespace mvrtpfec {

/// An output whose samples leave as datagrams. It has one buffer, so its caller delivers it before asking for
/// the next. A datagram that can't leave is lost and counted, as one on its way would be: a network that
/// fails for a while must not hold up what comes after.
class UdpOutput final : public IOutputPin {
public:
    /// Throws std::system_error when no socket can be had or the address can't be reached.
    UdpOutput(asio::io_context& context, const asio::ip::udp::endpoint& target);

    HRESULT Deliver(IMediaData* data) override;
    HRESULT DeliverEndOfStream() override { return S_OK; }
    HRESULT GetDeliveryBuffer(IMediaData** data, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                              DWORD flags) override;
    HRESULT DecideBufferSize(IMemAllocator*, ALLOCATOR_PROPERTIES*) override { return S_OK; }
    HRESULT Active() override { return S_OK; }
    HRESULT Inactive() override { return S_OK; }

    /// Of this machine, on the way to the target.
    std::string localAddress() const;
    std::uint64_t packets() const noexcept { return packets_; }
    std::uint64_t bytes() const noexcept { return bytes_; }
    /// Datagrams that the system refused to send.
    std::uint64_t refused() const noexcept { return refused_; }

private:
    asio::ip::udp::socket socket_;
    CComPtr<SimpleMediaData> buffer_;
    std::atomic<std::uint64_t> packets_{0};
    std::atomic<std::uint64_t> bytes_{0};
    std::atomic<std::uint64_t> refused_{0};
};

}  // namespace mvrtpfec
