#include "tests/filters/feeder.h"

#include <algorithm>

#include "mvrtpfec/rtp_media_type.h"
#include "platform/wide_literal.h"

namespace mvrtpfec {

using platform::operator""_w;

class Feeder::Pin : public CBaseOutputPin {
public:
    Pin(CBaseFilter* filter, CCritSec* lock, HRESULT* result)
        : CBaseOutputPin(nullptr, filter, lock, result, "Out"_w) {}

    HRESULT CheckMediaType(const CMediaType* type) override {
        return type->majortype == MEDIATYPE_Rtp ? S_OK : S_FALSE;
    }
    HRESULT GetMediaType(int position, CMediaType* type) override {
        if (position != 0) return VFW_S_NO_MORE_ITEMS;
        *type = CMediaType(MEDIATYPE_Rtp, MEDIASUBTYPE_Rtp);
        return S_OK;
    }
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override {
        *request = {100, 2048, 1, 0};
        ALLOCATOR_PROPERTIES actual{};
        return allocator->SetProperties(request, &actual);
    }
};

Feeder::Feeder(std::size_t pins) : CBaseFilter(nullptr, nullptr, &lock_, GUID_NULL) {
    HRESULT result = S_OK;
    for (std::size_t i = 0; i < pins; ++i) pins_.push_back(std::make_unique<Pin>(this, &lock_, &result));
}

Feeder::~Feeder() = default;

HRESULT Feeder::feed(std::size_t pin, std::span<const std::uint8_t> bytes) {
    CComPtr<IMediaSample> sample;
    HRESULT result = pins_[pin]->GetDeliveryBuffer(&sample, nullptr, nullptr, 0);
    if (FAILED(result)) return result;
    BYTE* data = nullptr;
    result = sample->GetPointer(&data);
    if (FAILED(result)) return result;
    std::ranges::copy(bytes, data);
    sample->SetActualDataLength(static_cast<LONG>(bytes.size()));
    return pins_[pin]->Deliver(sample);
}

CBaseOutputPin& Feeder::output(std::size_t pin) {
    return *pins_[pin];
}

int Feeder::GetPinCount() {
    return static_cast<int>(pins_.size());
}

CBasePin* Feeder::GetPin(int n) {
    return n >= 0 && n < GetPinCount() ? pins_[static_cast<std::size_t>(n)].get() : nullptr;
}

}  // namespace mvrtpfec
