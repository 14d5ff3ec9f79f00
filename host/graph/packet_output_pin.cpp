#include "host/graph/packet_output_pin.h"

#include <utility>

#include "host/graph/pin_names.h"
#include "mvrtpfec/rtp_media_type.h"

namespace mvrtpfec {

PacketOutputPin::PacketOutputPin(CBaseFilter* filter, CCritSec* lock, HRESULT* result, std::size_t index,
                                 std::shared_ptr<InFlight> inFlight)
    : CBaseOutputPin("PacketOutputPin", filter, lock, result, outputPinName(index)),
      index_(index),
      inFlight_(inFlight),
      packets_(new PacketAllocator(std::move(inFlight))) {}  // NOLINT(cppcoreguidelines-owning-memory)

HRESULT PacketOutputPin::CheckMediaType(const CMediaType* type) {
    return type->majortype == MEDIATYPE_Rtp && type->subtype == MEDIASUBTYPE_Rtp ? S_OK : S_FALSE;
}

HRESULT PacketOutputPin::GetMediaType(int position, CMediaType* type) {
    if (position != 0) return VFW_S_NO_MORE_ITEMS;
    *type = CMediaType(MEDIATYPE_Rtp, MEDIASUBTYPE_Rtp);
    return S_OK;
}

HRESULT PacketOutputPin::DecideAllocator(IMemInputPin* input, IMemAllocator** allocator) {
    *allocator = nullptr;
    ALLOCATOR_PROPERTIES ours{};
    const HRESULT sized = DecideBufferSize(packets_, &ours);
    if (FAILED(sized)) return sized;
    const HRESULT accepted = input->NotifyAllocator(packets_, FALSE);
    if (FAILED(accepted)) return accepted;
    return CComPtr<IMemAllocator>(packets_.p).CopyTo(allocator);
}

HRESULT PacketOutputPin::DecideBufferSize(IMemAllocator*, ALLOCATOR_PROPERTIES*) {
    return packets_->setUp();
}

HRESULT PacketOutputPin::deliver(std::unique_ptr<RtpPacket> packet, const Moment* moment) {
    CComPtr<PacketSample> sample;
    const HRESULT result = packets_->wrap(std::move(packet), &sample);
    if (FAILED(result)) return result;
    if (moment != nullptr) inFlight_->depart(index_, sample->tag, *moment);
    return Deliver(sample);
}

}  // namespace mvrtpfec
