#pragma once
// A source filter of any number of output pins and a sink filter of any number of input pins that record
// what happens to them and can be told what to accept and where to fail.

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "framework/base/base_filter.h"
#include "framework/base/base_input_pin.h"
#include "framework/base/base_output_pin.h"

namespace mvrtpfec {

/// Fully specified types that differ in their subtype.
inline CMediaType testType(std::uint8_t number) {
    CMediaType type(MEDIATYPE_Stream, GUID{number, 0, 0, {}});
    type.formattype = FORMAT_None;
    return type;
}

/// What a test pin accepts and where it fails; to be set before anything streams.
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

    void tryOwnTypesFirst() { this->m_bTryMyTypesFirst = true; }
    using Base::allocator;
    using Base::IsConnectedTo;
    using Base::PassNotify;

    HRESULT CheckMediaType(const CMediaType* type) override {
        const HRESULT result = behaviour.onCheckMediaType();
        if (result != S_OK) return result;
        for (const CMediaType& each : behaviour.accepted)
            if (each == *type) return S_OK;
        return S_FALSE;
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
    HRESULT canBlock = S_OK;
    /// Called for each sample taken.
    std::function<void(IMediaSample*)> onSample;

    std::atomic<int> received{0};
    std::atomic<int> endsOfStream{0};
    std::atomic<int> flushesBegun{0};
    std::atomic<int> flushesEnded{0};

    /// The bytes of the samples taken.
    std::vector<std::string> packets() const {
        const std::lock_guard lock(mutex_);
        return packets_;
    }

    STDMETHODIMP Receive(IMediaSample* sample) override {
        const HRESULT result = TestPin::Receive(sample);
        if (result != S_OK) return result;
        ++received;
        if (onSample)
            onSample(sample);
        else
            record(sample);
        return S_OK;
    }
    STDMETHODIMP ReceiveCanBlock() override { return canBlock; }
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
        BYTE* data = nullptr;
        if (FAILED(sample->GetPointer(&data))) return;
        const std::lock_guard lock(mutex_);
        packets_.emplace_back(data, data + sample->GetActualDataLength());
    }

    mutable std::mutex mutex_;
    std::vector<std::string> packets_;
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

    /// Copies the bytes into a sample and delivers it; waits for a free buffer unless `flags` says otherwise.
    HRESULT send(std::string_view bytes, std::size_t index = 0, DWORD flags = 0) {
        CComPtr<IMediaSample> sample;
        HRESULT result = pin(index).GetDeliveryBuffer(&sample, nullptr, nullptr, flags);
        if (FAILED(result)) return result;
        BYTE* data = nullptr;
        result = sample->GetPointer(&data);
        if (FAILED(result)) return result;
        std::memcpy(data, bytes.data(), bytes.size());
        sample->SetActualDataLength(static_cast<LONG>(bytes.size()));
        return pin(index).Deliver(sample);
    }
};

using TestSink = TestFilter<TestInputPin>;

/// A filter and the test's reference on it.
template <class Filter>
class Held {
public:
    explicit Held(int pins) : filter_(new Filter(pins)), reference_(filter_) {}

    Filter* operator->() const { return filter_; }
    Filter* get() const { return filter_; }
    void release() { reference_.Release(); }

private:
    Filter* filter_;
    CComPtr<IBaseFilter> reference_;
};

}  // namespace mvrtpfec
