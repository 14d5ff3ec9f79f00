#pragma once

#include <memory>

#include "core/rtp_packet.h"
#include "framework/base/base_allocator.h"
#include "host/graph/in_flight.h"
#include "host/graph/packet_sample.h"

namespace mvrtpfec {

/// Makes samples of packets without copying them.
class PacketAllocator final : public CBaseAllocator {
public:
    /// `inFlight`, if any, hears of every sample that comes home.
    explicit PacketAllocator(std::shared_ptr<InFlight> inFlight);

    /// Enough samples for all that a receiver has at once.
    HRESULT setUp() noexcept;

    /// A sample that owns `packet`, which has at least 12 bytes. Waits while all samples are out;
    /// VFW_E_NOT_COMMITTED when stopped, and the packet is gone then.
    HRESULT wrap(std::unique_ptr<RtpPacket> packet, PacketSample** sample) noexcept;

private:
    std::unique_ptr<CMediaSample> MakeSample(LONG index) override;
    void OnRelease(CMediaSample& sample) noexcept override;

    std::shared_ptr<InFlight> inFlight_;
};

}  // namespace mvrtpfec
