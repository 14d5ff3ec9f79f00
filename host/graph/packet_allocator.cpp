#include "host/graph/packet_allocator.h"

#include <utility>

#include "host/io/datagram.h"

namespace mvrtpfec {

PacketAllocator::PacketAllocator(std::shared_ptr<InFlight> inFlight)
    : CBaseAllocator("PacketAllocator", nullptr), inFlight_(std::move(inFlight)) {}

HRESULT PacketAllocator::setUp() noexcept {
    ALLOCATOR_PROPERTIES wanted{
        .cBuffers = LONG{InFlight::maxOut}, .cbBuffer = maxDatagramSize, .cbAlign = 1, .cbPrefix = 0};
    ALLOCATOR_PROPERTIES granted{};
    return SetProperties(&wanted, &granted);
}

HRESULT PacketAllocator::wrap(std::unique_ptr<RtpPacket> packet, PacketSample** sample) noexcept {
    CMediaSample* taken = nullptr;
    const HRESULT result = TakeSample(&taken, 0);
    if (FAILED(result)) return result;
    *sample = static_cast<PacketSample*>(taken);
    (*sample)->hold(std::move(packet));
    return S_OK;
}

std::unique_ptr<CMediaSample> PacketAllocator::MakeSample(LONG) {
    return std::make_unique<PacketSample>(nullptr, this, nullptr);
}

void PacketAllocator::OnRelease(CMediaSample& sample) noexcept {
    auto& home = static_cast<PacketSample&>(sample);
    home.drop();
    if (inFlight_) inFlight_->comeBack(home.tag);
}

}  // namespace mvrtpfec
