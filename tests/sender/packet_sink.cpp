#include "tests/sender/packet_sink.h"

#include <algorithm>
#include <utility>

#include "framework/base/mem_allocator.h"
#include "platform/wide_literal.h"

namespace mvrtpfec {

using platform::operator""_w;

namespace {

class SmallBuffers final : public CMemAllocator {
public:
    explicit SmallBuffers(LONG limit) : CMemAllocator(nullptr, nullptr), limit_(limit) {}

    STDMETHODIMP SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override {
        ALLOCATOR_PROPERTIES smaller = *request;
        smaller.cbBuffer = std::min(smaller.cbBuffer, limit_);
        return CMemAllocator::SetProperties(&smaller, actual);
    }

private:
    LONG limit_;
};

}  // namespace

class PacketSink::Pin final : public CBaseInputPin {
public:
    Pin(PacketSink* filter, int index, HRESULT* result)
        : CBaseInputPin(nullptr, filter, &filter->lock_, result, "In"_w), sink_(*filter), index_(index) {}

    HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }
    STDMETHODIMP GetAllocator(IMemAllocator** allocator) override {
        if (sink_.bufferLimit_ == 0) return CBaseInputPin::GetAllocator(allocator);
        return CComPtr<IMemAllocator>(new SmallBuffers(sink_.bufferLimit_)).CopyTo(allocator);
    }
    STDMETHODIMP Receive(IMediaSample* sample) override {
        const HRESULT result = CBaseInputPin::Receive(sample);
        if (result == S_OK) sink_.take(index_, sample);
        return result;
    }
    STDMETHODIMP EndOfStream() override {
        sink_.note({index_, {}});
        return CBaseInputPin::EndOfStream();
    }

private:
    PacketSink& sink_;
    int index_;
};

PacketSink::PacketSink() : CBaseFilter(nullptr, nullptr, &lock_, GUID_NULL) {
    HRESULT result = S_OK;
    for (int i = 0; i < 2; ++i) pins_.push_back(std::make_unique<Pin>(this, i, &result));
}

PacketSink::~PacketSink() = default;

CBasePin* PacketSink::GetPin(int n) {
    return n >= 0 && n < GetPinCount() ? pins_[static_cast<std::size_t>(n)].get() : nullptr;
}

std::vector<Arrival> PacketSink::arrivals() const {
    const std::lock_guard lock(mutex_);
    return arrivals_;
}

void PacketSink::hold(bool on) {
    std::vector<CComPtr<IMediaSample>> released;
    const std::lock_guard lock(mutex_);
    holding_ = on;
    if (!on) released.swap(held_);
}

void PacketSink::take(int pin, IMediaSample* sample) {
    if (action_) action_();
    BYTE* data = nullptr;
    if (FAILED(sample->GetPointer(&data))) return;
    note({pin, Bytes(data, data + sample->GetActualDataLength())});
    const std::lock_guard lock(mutex_);
    if (holding_) held_.emplace_back(sample);
}

void PacketSink::note(Arrival arrival) {
    const std::lock_guard lock(mutex_);
    arrivals_.push_back(std::move(arrival));
}

}  // namespace mvrtpfec
