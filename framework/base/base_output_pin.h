#pragma once

#include "framework/base/base_pin.h"

namespace mvrtpfec {

/// An output pin that delivers samples in memory. GetDeliveryBuffer and the Deliver operations are for
/// streaming threads; they hold no lock of the pin or the filter while downstream or the allocator works, and
/// may run while other threads stop the filter or change the connection.
class CBaseOutputPin : public CBasePin {
public:
    CBaseOutputPin(const char* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* result,
                   LPCWSTR name);

    /// The other end must be an IMemInputPin.
    HRESULT CheckConnect(IPin* pin) override;
    HRESULT CompleteConnect(IPin* receiver) override;
    /// Decommits the allocator and lets go of it and of the other end's IMemInputPin.
    HRESULT BreakConnect() override;
    /// Commit and decommit the allocator; VFW_E_NO_ALLOCATOR. A decommit wakes threads in GetDeliveryBuffer.
    HRESULT Active() override;
    HRESULT Inactive() override;

    /// Agrees an allocator with the other end and tells it: its own, or else this pin's. On failure
    /// `*allocator` is null.
    virtual HRESULT DecideAllocator(IMemInputPin* input, IMemAllocator** allocator);
    /// Sets the allocator's properties. `request` comes with what the other end requires, zeros where it
    /// requires nothing.
    virtual HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) = 0;
    /// Makes this pin's own allocator.
    virtual HRESULT InitAllocator(IMemAllocator** allocator);

    /// Waits for a free buffer, unless `flags` has AM_GBF_NOWAIT. E_NOINTERFACE without an allocator,
    /// VFW_E_NOT_COMMITTED when the filter is stopped, even meanwhile. `start` and `stop` may be null.
    virtual HRESULT GetDeliveryBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                                      DWORD flags);
    /// These give VFW_E_NOT_CONNECTED when there is no other end.
    virtual HRESULT Deliver(IMediaSample* sample);
    virtual HRESULT DeliverEndOfStream();
    virtual HRESULT DeliverBeginFlush();
    virtual HRESULT DeliverEndFlush();
    virtual HRESULT DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);

    /// Nobody is to call these on an output pin: E_UNEXPECTED.
    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP BeginFlush() override;
    STDMETHODIMP EndFlush() override;

protected:
    /// The allocator agreed on, and the other end; may be empty.
    CComPtr<IMemAllocator> allocator() const noexcept { return copied(allocator_).get(); }
    CComPtr<IMemInputPin> inputPin() const noexcept { return copied(inputPin_).get(); }

private:
    HRESULT offerAllocator(IMemInputPin* input, IMemAllocator* allocator, ALLOCATOR_PROPERTIES required);

    // Shared, since every sample takes a reference on them: one of the component model's goes through
    // several objects.
    std::shared_ptr<IMemAllocator> allocator_;
    std::shared_ptr<IMemInputPin> inputPin_;
};

}  // namespace mvrtpfec
