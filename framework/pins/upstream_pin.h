#pragma once

#include "framework/base/base_output_pin.h"
#include "framework/pins/output_pin.h"

namespace mvrtpfec {

/// Lets code that is no pin deliver through an output pin, which must outlive it. No exception of the pin
/// passes through.
class UpStreamPin final : public IOutputPin {
public:
    explicit UpStreamPin(CBaseOutputPin* pin) noexcept : pin_(pin) {}

    /// The wrapper's sample. E_INVALIDARG for a wrapper without one.
    HRESULT Deliver(IMediaData* data) override;
    HRESULT DeliverEndOfStream() override;
    HRESULT GetDeliveryBuffer(IMediaData** data, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                              DWORD flags) override;
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;
    HRESULT Active() override;
    HRESULT Inactive() override;

private:
    CBaseOutputPin* pin_;
};

}  // namespace mvrtpfec
