#pragma once

#include <atomic>

#include "framework/base/base_output_pin.h"
#include "framework/pins/output_pin.h"

namespace mvrtpfec {

class CRtpFecIn;

/// "Output": the repaired media stream, one RTP packet a sample. The filter delivers through the base class;
/// IOutputPin2 is for code that delivers wrapped samples, and holds the pin's lock while it delivers.
class CRtpFecInOutputPin final : public CBaseOutputPin, public IOutputPin2 {
public:
    CRtpFecInOutputPin(CRtpFecIn* filter, HRESULT* result);

    /// MPEG-2 transport stream alone: S_OK, otherwise S_FALSE.
    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT GetMediaType(int position, CMediaType* type) override;
    /// At least 100 buffers of at least 1400 bytes, or E_FAIL; the statistics logger then hears of the pool.
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;
    HRESULT Active() override;
    /// Nothing here can go faster or slower.
    STDMETHODIMP Notify(IBaseFilter*, Quality) override { return S_OK; }

    using CBaseOutputPin::Deliver;
    using CBaseOutputPin::GetDeliveryBuffer;
    HRESULT Deliver(IMediaData2* data) override;
    /// Tells the statistics logger before it waits for a buffer.
    HRESULT GetDeliveryBuffer(IMediaData2** data, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                              DWORD flags) override;

private:
    static constexpr REFERENCE_TIME none = -1;

    HRESULT getBuffer(CComPtr<IMediaSample>& sample, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                      DWORD flags);

    CCritSec lock_;
    CRtpFecIn& owner_;
    /// Of the samples delivered through IOutputPin2.
    std::atomic<REFERENCE_TIME> lastStartTime_{none};
};

}  // namespace mvrtpfec
