#pragma once
// A source filter of any number of output pins and a sink filter of any number of input pins that record
// what happens to them and can be told what to accept and where to fail.

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "framework/base/base_filter.h"
#include "framework/base/base_input_pin.h"
#include "framework/base/base_output_pin.h"
#include "tests/shared/bytes.h"

namespace mvrtpfec {

/// Fully specified types that differ in their subtype.
inline CMediaType testType(std::uint8_t number) {
    CMediaType type(MEDIATYPE_Stream, GUID{number, 0, 0, {}});
    type.formattype = FORMAT_None;
    return type;
}

inline Bytes bytesOf(IMediaSample* sample) {
    BYTE* data = nullptr;
    sample->GetPointer(&data);
    return Bytes(data, data + sample->GetActualDataLength());
}

/// What a test pin accepts (without a list, anything) and where it fails; to be set before anything streams.
struct PinBehaviour {
    std::vector<CMediaType> accepted{testType(1)};
    std::vector<CMediaType> offered{testType(1)};
    /// Called at their places; they may throw.
    std::function<HRESULT()> onCheckMediaType = [] { return S_OK; };
    std::function<HRESULT()> onCompleteConnect = [] { return S_OK; };
    std::function<HRESULT()> onActive = [] { return S_OK; };
    std::function<HRESULT()> onInactive = [] { return S_OK; };
};

struct PinCalls {
    std::atomic<int> active{0};
    std::atomic<int> inactive{0};
    std::atomic<int> run{0};
    std::atomic<REFERENCE_TIME> runStart{0};
};

template <class Base>
class TestPin : public Base {
public:
    using Base::Base;

    PinBehaviour behaviour;
    PinCalls calls;

    void tryOwnTypesFirst(bool on) { this->m_bTryMyTypesFirst = on; }
    using Base::allocator;
    using Base::IsConnectedTo;
    using Base::PassNotify;

    HRESULT CheckMediaType(const CMediaType* type) override {
        const HRESULT result = behaviour.onCheckMediaType();
        if (result != S_OK) return result;
        for (const CMediaType& each : behaviour.accepted)
            if (each == *type) return S_OK;
        return behaviour.accepted.empty() ? S_OK : S_FALSE;
    }
    HRESULT GetMediaType(int position, CMediaType* type) override {
        const auto index = static_cast<std::size_t>(position);
        if (index >= behaviour.offered.size()) return VFW_S_NO_MORE_ITEMS;
        *type = behaviour.offered[index];
        return S_OK;
    }
    HRESULT CompleteConnect(IPin* other) override {
        const HRESULT result = behaviour.onCompleteConnect();
        return FAILED(result) ? result : Base::CompleteConnect(other);
    }
    HRESULT Active() override {
        const HRESULT result = behaviour.onActive();
        if (FAILED(result)) return result;
        ++calls.active;
        return Base::Active();
    }
    HRESULT Inactive() override {
        ++calls.inactive;
        const HRESULT result = Base::Inactive();
        const HRESULT told = behaviour.onInactive();
        return FAILED(told) ? told : result;
    }
    HRESULT Run(REFERENCE_TIME start) override {
        ++calls.run;
        calls.runStart = start;
        return S_OK;
    }
};

class TestOutputPin final : public TestPin<CBaseOutputPin> {
public:
    TestOutputPin(CBaseFilter* filter, CCritSec* lock, HRESULT* result, LPCWSTR name)
        : TestPin("TestOutputPin", filter, lock, result, name) {}

    /// Asked for at least; what the other end requires counts too.
    ALLOCATOR_PROPERTIES buffers{4, 256, 0, 0};
    /// What came in as requirements, and how often.
    ALLOCATOR_PROPERTIES required{};
    int decided = 0;

    HRESULT DecideBufferSize(IMemAllocator* chosen, ALLOCATOR_PROPERTIES* request) override {
        ++decided;
        required = *request;
        request->cBuffers = std::max(request->cBuffers, buffers.cBuffers);
        request->cbBuffer = std::max(request->cbBuffer, buffers.cbBuffer);
        ALLOCATOR_PROPERTIES actual{};
        return chosen->SetProperties(request, &actual);
    }
};

class TestInputPin final : public TestPin<CBaseInputPin> {
public:
    TestInputPin(CBaseFilter* filter, CCritSec* lock, HRESULT* result, LPCWSTR name)
        : TestPin("TestInputPin", filter, lock, result, name) {}

    std::optional<ALLOCATOR_PROPERTIES> requirements;
    /// The allocators refused before one is taken.
    int allocatorsRefused = 0;
    std::optional<HRESULT> canBlock;
    /// Called for each sample taken.
    std::function<void(IMediaSample*)> onSample;

    std::atomic<int> received{0};
    std::atomic<int> endsOfStream{0};
    std::atomic<int> flushesBegun{0};
    std::atomic<int> flushesEnded{0};

    /// The bytes of the samples taken.
    std::vector<Bytes> packets() const {
        const std::lock_guard lock(mutex_);
        return packets_;
    }
    /// From now on keeps every sample, so that upstream runs out of buffers; or lets go, old ones too.
    void hold(bool on) {
        std::vector<CComPtr<IMediaSample>> released;
        const std::lock_guard lock(mutex_);
        holding_ = on;
        if (!on) released.swap(held_);
    }

    STDMETHODIMP Receive(IMediaSample* sample) override {
        const HRESULT result = TestPin::Receive(sample);
        if (result != S_OK) return result;
        ++received;
        if (onSample)
            onSample(sample);
        else
            record(sample);
        const std::lock_guard lock(mutex_);
        if (holding_) held_.emplace_back(sample);
        return S_OK;
    }
    STDMETHODIMP ReceiveCanBlock() override { return canBlock ? *canBlock : TestPin::ReceiveCanBlock(); }
    STDMETHODIMP EndOfStream() override {
        ++endsOfStream;
        return TestPin::EndOfStream();
    }
    STDMETHODIMP BeginFlush() override {
        ++flushesBegun;
        return TestPin::BeginFlush();
    }
    STDMETHODIMP EndFlush() override {
        ++flushesEnded;
        return TestPin::EndFlush();
    }
    STDMETHODIMP NotifyAllocator(IMemAllocator* chosen, BOOL readOnly) override {
        if (allocatorsRefused > 0) {
            --allocatorsRefused;
            return VFW_E_BADALIGN;
        }
        return TestPin::NotifyAllocator(chosen, readOnly);
    }
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) override {
        if (!requirements) return TestPin::GetAllocatorRequirements(properties);
        *properties = *requirements;
        return S_OK;
    }

private:
    void record(IMediaSample* sample) {
        const std::lock_guard lock(mutex_);
        packets_.push_back(bytesOf(sample));
    }

    mutable std::mutex mutex_;
    std::vector<Bytes> packets_;
    bool holding_ = false;
    std::vector<CComPtr<IMediaSample>> held_;
};

/// A filter of `Pin`s that are named "Pin 1", "Pin 2", ...
template <class Pin>
class TestFilter : public CBaseFilter {
public:
    explicit TestFilter(int pins) : CBaseFilter("TestFilter", nullptr, &lock_, CLSID{7, 0, 0, {}}) {
        for (int i = 0; i < pins; ++i) addPin();
    }

    Pin& pin(std::size_t index = 0) { return *pins_[index]; }
    void addPin() {
        constexpr WCHAR digits[] = {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9'};
        const WCHAR name[] = {'P', 'i', 'n', ' ', digits[pins_.size() + 1], 0};
        HRESULT result = S_OK;
        pins_.push_back(std::make_unique<Pin>(this, &lock_, &result, name));
        IncrementPinVersion();
    }
    /// Says nothing to enumerators.
    void dropPin() { pins_.pop_back(); }

    int GetPinCount() override { return static_cast<int>(pins_.size()); }
    CBasePin* GetPin(int index) override {
        return index >= 0 && index < GetPinCount() ? pins_[static_cast<std::size_t>(index)].get() : nullptr;
    }

protected:
    CCritSec lock_;

private:
    std::vector<std::unique_ptr<Pin>> pins_;
};

class TestSource : public TestFilter<TestOutputPin> {
public:
    using TestFilter::TestFilter;

    /// Copies the bytes into a sample and delivers it; waits for a free buffer.
    HRESULT send(const Bytes& bytes, std::size_t index = 0) {
        CComPtr<IMediaSample> sample;
        const HRESULT result = pin(index).GetDeliveryBuffer(&sample, nullptr, nullptr, 0);
        if (FAILED(result)) return result;
        BYTE* data = nullptr;
        sample->GetPointer(&data);
        std::ranges::copy(bytes, data);
        sample->SetActualDataLength(static_cast<LONG>(bytes.size()));
        return pin(index).Deliver(sample);
    }
};

using TestSink = TestFilter<TestInputPin>;

/// One input and any number of outputs.
class ForkFilter : public TestSource {
public:
    explicit ForkFilter(int outputs) : TestSource(outputs) {}

    TestInputPin& input() { return input_; }
    int GetPinCount() override { return TestSource::GetPinCount() + 1; }
    CBasePin* GetPin(int index) override { return index == 0 ? &input_ : TestSource::GetPin(index - 1); }

private:
    HRESULT result_ = S_OK;
    TestInputPin input_{this, &lock_, &result_, nullptr};
};

/// A filter and the test's reference on it. It is stopped and disconnected before that goes, since connected
/// pins hold each other's filters.
template <class Filter>
class Held {
public:
    explicit Held(int pins) : Held(new Filter(pins)) {}
    explicit Held(Filter* filter) : filter_(filter), reference_(filter) {}
    ~Held() {
        if (filter_ == nullptr) return;
        filter_->Stop();
        for (int n = 0; n < filter_->GetPinCount(); ++n) filter_->GetPin(n)->Disconnect();
    }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

    Filter* operator->() const { return filter_; }
    /// Null when released.
    Filter* get() const { return filter_; }
    /// As it is.
    void release() {
        filter_ = nullptr;
        reference_.Release();
    }

private:
    Filter* filter_;
    CComPtr<IBaseFilter> reference_;
};

}  // namespace mvrtpfec
