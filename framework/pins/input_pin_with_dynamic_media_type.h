#pragma once

#include <atomic>

#include "framework/base/base_input_pin.h"

namespace mvrtpfec {

/// An input pin that takes a reconnection at any time, in any state of the filter, and makes sure that the
/// first sample after a (re)connection carries the connection's media type, so that whoever handles samples
/// learns of the new format from the stream.
///
/// Receive makes no check of the streaming state; ReceiveSample owns those.
class CInputPinWithDynamicMediaType : public CBaseInputPin {
public:
    using CBaseInputPin::CBaseInputPin;

    /// Replaces a connection that there is. Holds the filter lock. A refusal leaves the pin as it was, but
    /// for BreakConnect; a failure after that leaves it unconnected.
    STDMETHODIMP ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP Receive(IMediaSample* sample) override;
    /// E_FAIL for an allocator with fewer or smaller buffers than GetAllocatorRequirements asks for.
    STDMETHODIMP NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) override;

    /// The last step instead of CompleteConnect when the pin that was connected connects again.
    virtual HRESULT CompleteReconnect(IPin* connector);
    virtual HRESULT ReceiveSample(IMediaSample* sample) = 0;

private:
    HRESULT checkConnection(IPin* connector, const AM_MEDIA_TYPE& type);
    HRESULT acceptConnection(IPin* connector, const AM_MEDIA_TYPE& type);
    /// Deletes `attached`.
    HRESULT receiveWithType(IMediaSample* sample, AM_MEDIA_TYPE* attached);
    HRESULT receiveAnnouncing(IMediaSample* sample);

    /// Set by the thread that reconnects, cleared by the streaming thread.
    std::atomic<bool> m_bTypeChangePending{true};
};

}  // namespace mvrtpfec
