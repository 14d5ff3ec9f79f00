#include "packet_filters.h"

#include <algorithm>

#include <mvrtpfec/rtp_media_type.h>
#include <platform/wide_literal.h>

namespace example {

using platform::operator""_w;

namespace {

constexpr LONG longestPacket = 1416;
/// As many as the receiver's inputs insist on: they hold samples back while they put them in order.
constexpr LONG fewestBuffers = 100;

constexpr std::array outputNames{"Out 1"_w, "Out 2"_w, "Out 3"_w, "Out 4"_w};
constexpr std::array inputNames{"In 1"_w, "In 2"_w};

CBasePin* pinAt(auto& pins, int index) {
    return index >= 0 && static_cast<std::size_t>(index) < pins.size()
               ? pins[static_cast<std::size_t>(index)].get()
               : nullptr;
}

}  // namespace

HRESULT PacketOutputPin::CheckMediaType(const CMediaType* type) {
    return type->majortype == MEDIATYPE_Rtp && type->subtype == MEDIASUBTYPE_Rtp ? S_OK : S_FALSE;
}

HRESULT PacketOutputPin::GetMediaType(int position, CMediaType* type) {
    if (position != 0) return VFW_S_NO_MORE_ITEMS;
    *type = CMediaType(MEDIATYPE_Rtp, MEDIASUBTYPE_Rtp);
    return S_OK;
}

HRESULT PacketOutputPin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
    request->cBuffers = std::max(request->cBuffers, fewestBuffers);
    request->cbBuffer = std::max(request->cbBuffer, longestPacket);
    request->cbAlign = std::max(request->cbAlign, LONG{1});
    ALLOCATOR_PROPERTIES granted{};
    const HRESULT result = allocator->SetProperties(request, &granted);
    if (FAILED(result)) return result;
    return granted.cbBuffer < longestPacket || granted.cBuffers < fewestBuffers ? E_FAIL : S_OK;
}

HRESULT PacketOutputPin::push(Packet packet) {
    CComPtr<IMediaSample> sample;
    HRESULT result = GetDeliveryBuffer(&sample, nullptr, nullptr, 0);
    if (FAILED(result)) return result;
    BYTE* bytes = nullptr;
    result = sample->GetPointer(&bytes);
    if (SUCCEEDED(result)) result = sample->SetActualDataLength(static_cast<LONG>(packet.size()));
    if (FAILED(result)) return result;
    std::copy(packet.begin(), packet.end(), bytes);
    return Deliver(sample);
}

PacketSource::PacketSource(std::size_t pins, HRESULT* result)
    : CBaseFilter("PacketSource", nullptr, &lock_, GUID_NULL) {
    for (std::size_t i = 0; i < pins; ++i)
        pins_.push_back(
            std::make_unique<PacketOutputPin>("PacketOutputPin", this, &lock_, result, outputNames.at(i)));
}

CBasePin* PacketSource::GetPin(int index) {
    return pinAt(pins_, index);
}

class PacketSink::Input final : public CBaseInputPin {
public:
    Input(PacketSink& sink, std::size_t index, HRESULT* result)
        : CBaseInputPin("PacketInputPin", &sink, &sink.lock_, result, inputNames.at(index)),
          sink_(sink),
          index_(index) {}

    HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }

    STDMETHODIMP Receive(IMediaSample* sample) override {
        HRESULT result = CBaseInputPin::Receive(sample);
        if (result != S_OK) return result;
        BYTE* bytes = nullptr;
        result = sample->GetPointer(&bytes);
        if (FAILED(result)) return result;
        return sink_.callback_(index_, {bytes, static_cast<std::size_t>(sample->GetActualDataLength())});
    }

private:
    PacketSink& sink_;
    std::size_t index_;
};

PacketSink::PacketSink(std::size_t pins, Callback callback, HRESULT* result)
    : CBaseFilter("PacketSink", nullptr, &lock_, GUID_NULL), callback_(std::move(callback)) {
    for (std::size_t i = 0; i < pins; ++i) pins_.push_back(std::make_unique<Input>(*this, i, result));
}

CBasePin* PacketSink::GetPin(int index) {
    return pinAt(pins_, index);
}

}  // namespace example
