#pragma once

#include "framework/samples/media_data.h"

namespace mvrtpfec {

/// An output pin as code sees it that is no pin: it delivers wrapped samples.
struct IOutputPin {
    virtual ~IOutputPin() = default;

    virtual HRESULT Deliver(IMediaData* data) = 0;
    virtual HRESULT DeliverEndOfStream() = 0;
    /// The caller owns the wrapper's one reference. A failure leaves `data` unwritten.
    virtual HRESULT GetDeliveryBuffer(IMediaData** data, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                                      DWORD flags) = 0;
    virtual HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) = 0;
    virtual HRESULT Active() = 0;
    virtual HRESULT Inactive() = 0;
};

/// The same for wrappers with a properties record; null data is the end of the stream.
struct IOutputPin2 {
    virtual ~IOutputPin2() = default;

    virtual HRESULT Deliver(IMediaData2* data) = 0;
    virtual HRESULT GetDeliveryBuffer(IMediaData2** data, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                                      DWORD flags) = 0;
};

}  // namespace mvrtpfec
