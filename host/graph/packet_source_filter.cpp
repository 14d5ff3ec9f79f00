#include "host/graph/packet_source_filter.h"

#include <utility>

#include "host/graph/graph_error.h"

namespace mvrtpfec {

CComPtr<PacketSourceFilter> PacketSourceFilter::create(std::size_t pins,
                                                       const std::shared_ptr<InFlight>& inFlight) {
    HRESULT result = S_OK;
    CComPtr<PacketSourceFilter> filter(
        new PacketSourceFilter(pins, inFlight, &result));  // NOLINT(cppcoreguidelines-owning-memory)
    requireGraph(result, "a source filter can't be created");
    return filter;
}

PacketSourceFilter::PacketSourceFilter(std::size_t pins, const std::shared_ptr<InFlight>& inFlight,
                                       HRESULT* result)
    : CBaseFilter("PacketSourceFilter", nullptr, &lock_, GUID_NULL) {
    for (std::size_t pin = 0; pin < pins; ++pin)
        pins_.push_back(std::make_unique<PacketOutputPin>(this, &lock_, result, pin, inFlight));
}

int PacketSourceFilter::GetPinCount() {
    return static_cast<int>(pins_.size());
}

CBasePin* PacketSourceFilter::GetPin(int index) {
    return index >= 0 && index < GetPinCount() ? pins_[static_cast<std::size_t>(index)].get() : nullptr;
}

HRESULT PacketSourceFilter::deliver(std::size_t pin, std::unique_ptr<RtpPacket> packet,
                                    const Moment* moment) {
    return pins_[pin]->deliver(std::move(packet), moment);
}

HRESULT PacketSourceFilter::endStream() {
    HRESULT result = S_OK;
    for (std::size_t i = pins_.size(); i-- > 0 && SUCCEEDED(result);) result = pins_[i]->DeliverEndOfStream();
    return result;
}

}  // namespace mvrtpfec
