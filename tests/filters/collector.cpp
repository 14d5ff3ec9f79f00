#include "tests/filters/collector.h"

#include "platform/wide_literal.h"

namespace mvrtpfec {

using platform::operator""_w;

class Collector::Pin : public CBaseInputPin {
public:
    Pin(Collector* filter, CCritSec* lock, HRESULT* result)
        : CBaseInputPin(nullptr, filter, lock, result, "In"_w), collector_(*filter) {}

    HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }
    STDMETHODIMP Receive(IMediaSample* sample) override {
        const HRESULT result = CBaseInputPin::Receive(sample);
        if (result == S_OK) collector_.take(sample);
        return result;
    }

private:
    Collector& collector_;
};

Collector::Collector(std::size_t pins) : CBaseFilter(nullptr, nullptr, &lock_, GUID_NULL) {
    HRESULT result = S_OK;
    for (std::size_t i = 0; i < pins; ++i) pins_.push_back(std::make_unique<Pin>(this, &lock_, &result));
}

Collector::~Collector() = default;

CBaseInputPin& Collector::input(std::size_t pin) {
    return *pins_[pin];
}

void Collector::take(IMediaSample* sample) {
    ++received_;
    if (const DWORD delay = delay_) Sleep(delay);
    const std::lock_guard lock(mutex_);
    if (holding_) held_.emplace_back(sample);
}

void Collector::hold() {
    const std::lock_guard lock(mutex_);
    holding_ = true;
}

void Collector::letGo() {
    std::vector<CComPtr<IMediaSample>> released;
    const std::lock_guard lock(mutex_);
    holding_ = false;
    released.swap(held_);
}

std::size_t Collector::held() const {
    const std::lock_guard lock(mutex_);
    return held_.size();
}

int Collector::GetPinCount() {
    return static_cast<int>(pins_.size());
}

CBasePin* Collector::GetPin(int n) {
    return n >= 0 && n < GetPinCount() ? pins_[static_cast<std::size_t>(n)].get() : nullptr;
}

}  // namespace mvrtpfec
