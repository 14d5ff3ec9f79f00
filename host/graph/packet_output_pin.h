#pragma once

#include <memory>

#include "core/rtp_packet.h"
#include "framework/base/base_output_pin.h"
#include "host/graph/in_flight.h"
#include "host/graph/packet_allocator.h"

namespace mvrtpfec {

/// An output pin that hands on RTP packets without copying them: it insists on an allocator of its own.
class PacketOutputPin final : public CBaseOutputPin {
public:
    /// `inFlight`, if any, is that of the receiver whose input `index` this pin feeds.
    PacketOutputPin(CBaseFilter* filter, CCritSec* lock, HRESULT* result, std::size_t index,
                    std::shared_ptr<InFlight> inFlight = nullptr);

    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT GetMediaType(int position, CMediaType* type) override;
    HRESULT DecideAllocator(IMemInputPin* input, IMemAllocator** allocator) override;
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;

    /// Delivers one packet of at least 12 bytes on the calling thread and holds nothing of it afterwards. To
    /// a receiver it goes with the moment of its push, and waits first while too much is in flight.
    HRESULT deliver(std::unique_ptr<RtpPacket> packet, const Moment* moment = nullptr);

private:
    std::size_t index_;
    std::shared_ptr<InFlight> inFlight_;
    CComPtr<PacketAllocator> packets_;
};

}  // namespace mvrtpfec
