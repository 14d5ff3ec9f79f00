#pragma once

#include "framework/base/base_pin.h"

namespace mvrtpfec {

/// An input pin that takes samples in memory. Receive and the end-of-stream, flush and segment calls come on
/// upstream's threads. Receive alone holds no lock; derived classes do their work after the base class's
/// Receive has said S_OK.
class CBaseInputPin : public CBasePin, public IMemInputPin {
public:
    CBaseInputPin(const char* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* result, LPCWSTR name);

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override;

    /// The allocator agreed on, or one made when there is none.
    STDMETHODIMP GetAllocator(IMemAllocator** allocator) override;
    STDMETHODIMP NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) override;
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) override;
    /// CheckStreaming's result; then, when the sample carries a type that CheckMediaType refuses, a run-time
    /// error: EndOfStream is called, the graph told, and the result is VFW_E_INVALIDMEDIATYPE.
    STDMETHODIMP Receive(IMediaSample* sample) override;
    /// Receives one after the other while each gives S_OK.
    STDMETHODIMP ReceiveMultiple(IMediaSample** samples, LONG count, LONG* processed) override;
    /// S_FALSE when no receiver downstream blocks; S_OK when one may, or when nobody is connected downstream.
    STDMETHODIMP ReceiveCanBlock() override;

    /// From here on Receive refuses samples (S_FALSE), until EndFlush, which also ends a run-time error.
    STDMETHODIMP BeginFlush() override;
    STDMETHODIMP EndFlush() override;

    STDMETHODIMP Notify(IBaseFilter* self, Quality message) override;

    /// Ends a run-time error and a flush, and decommits the allocator (VFW_E_NO_ALLOCATOR).
    HRESULT Inactive() override;
    /// Decommits the allocator and lets go of it.
    HRESULT BreakConnect() override;

    /// Whether samples may be received now: VFW_E_WRONG_STATE when stopped, S_FALSE while flushing,
    /// VFW_E_RUNTIME_ERROR, VFW_E_NOT_CONNECTED.
    virtual HRESULT CheckStreaming();

    bool IsReadOnly() const noexcept { return m_bReadOnly; }
    bool IsFlushing() const noexcept { return m_bFlushing; }

protected:
    /// The allocator agreed on; may be empty.
    CComPtr<IMemAllocator> allocator() const noexcept { return copied(allocator_); }

    std::atomic<bool> m_bFlushing{false};
    std::atomic<bool> m_bReadOnly{false};

private:
    HRESULT checkAttachedType(IMediaSample* sample);
    HRESULT checkNewType(const AM_MEDIA_TYPE& type);

    CComPtr<IMemAllocator> allocator_;
};

}  // namespace mvrtpfec
