#pragma once

#include <memory>
#include <utility>

#include "framework/guarded_entry.h"
#include "framework/pins/input_pin_with_dynamic_media_type.h"

namespace mvrtpfec {

/// What the receiver's input pins say of themselves, whatever they hand their samples to. Any media type is
/// taken, though a video type is offered. Upstream must have 100 buffers, since many samples wait here. The
/// pin's lock is its own, not the filter's.
class CMorvaneInputPinBase : public CInputPinWithDynamicMediaType {
public:
    CMorvaneInputPinBase(CBaseFilter* filter, LPCWSTR name);

    HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }
    HRESULT GetMediaType(int position, CMediaType* type) override;
    /// E_FAIL for fewer than 100 buffers or empty ones.
    STDMETHODIMP NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) override;
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) override;
    STDMETHODIMP ReceiveCanBlock() override { return S_FALSE; }

private:
    CCritSec lock_;
};

/// Hands every sample, and every end of stream, to a T with Receive(CComPtr<IMediaSample>) and
/// EndOfStream(). The streaming state is not looked at: samples are handed on while flushing like any other.
template <class T>
class CMorvaneInputPin final : public CMorvaneInputPinBase {
public:
    CMorvaneInputPin(CBaseFilter* filter, LPCWSTR name, std::shared_ptr<T> handler)
        : CMorvaneInputPinBase(filter, name), owned_(std::move(handler)), handler_(owned_.get()) {}

    HRESULT ReceiveSample(IMediaSample* sample) override {
        return guardedEntry([&] {
            handler_->Receive(CComPtr<IMediaSample>(sample));
            return S_OK;
        });
    }
    STDMETHODIMP EndOfStream() override {
        return guardedEntry([&] {
            handler_->EndOfStream();
            return S_OK;
        });
    }

private:
    std::shared_ptr<T> owned_;
    T* handler_;
};

}  // namespace mvrtpfec
