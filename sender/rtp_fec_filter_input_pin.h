#pragma once

#include "framework/base/base_input_pin.h"

namespace mvrtpfec {

class CRtpFecFilter;

/// "Input" of the sender filter: one media packet a sample. The FEC packets that a media packet completes are
/// delivered inside its Receive, on upstream's streaming thread, which may so block.
class CRtpFecFilterInputPin final : public CBaseInputPin {
public:
    CRtpFecFilterInputPin(CRtpFecFilter* filter, CCritSec* lock, HRESULT* result);

    /// S_OK for RTP packets, S_FALSE for anything else.
    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT GetMediaType(int position, CMediaType* type) override;

    /// The base class's result. That an FEC packet found no way out is nobody's failure; any other exception
    /// is E_FAIL.
    STDMETHODIMP Receive(IMediaSample* sample) override;
    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP ReceiveCanBlock() override { return S_OK; }

private:
    void process(IMediaSample* sample);
};

}  // namespace mvrtpfec
