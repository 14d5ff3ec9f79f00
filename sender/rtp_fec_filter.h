#pragma once

#include <atomic>

#include "framework/base/base_filter.h"
#include "mvrtpfec/rtp_fec_filter.h"
#include "sender/protection.h"
#include "sender/rtp_fec_filter_input_pin.h"
#include "sender/rtp_fec_filter_output_pin.h"

namespace mvrtpfec {

/// "Morvane FEC over RTP Filter": adds FEC streams to a stream of RTP media packets, which itself goes
/// another way. It has no thread of its own; all work is done inside Receive of "Input".
///
/// The matrix starts afresh at every Pause but one from running, which ends protection: what then arrives
/// before the next stop and start is passed over. Application threads may change the state under a
/// streaming thread; see Protection.
class CRtpFecFilter final : public CBaseFilter, public IFECoverRTPConfig {
public:
    /// The new filter, without a reference yet, or null and why in `result` (which may be null).
    static CUnknown* CreateInstance(IUnknown* outer, HRESULT* result);

    CRtpFecFilter(IUnknown* outer, HRESULT* result);

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override;

    /// "Input", "FECA", "FECB".
    int GetPinCount() override { return 3; }
    CBasePin* GetPin(int index) override;

    /// From running: the base class's result. Otherwise E_FAIL when the configured matrix is no matrix; the
    /// filter is paused nevertheless.
    STDMETHODIMP Pause() override;

    STDMETHODIMP SetColumns(std::int32_t columns) override;
    STDMETHODIMP SetRows(std::int32_t rows) override;
    STDMETHODIMP SetMode(std::int32_t mode) override;

    /// The work of the input pin for one media packet, or for the end of the stream (null). Throws
    /// mvn::COMException when an FEC packet can't be sent; the matrix then stays a column behind, and what
    /// "FECA" can't send "FECB" doesn't see.
    void processPacket(IMediaSample* sample);

private:
    void createComposers();
    HRESULT configure(std::atomic<std::int32_t>& value, std::int32_t wanted, std::int32_t low,
                      std::int32_t high);

    std::atomic<std::int32_t> columns_{0};
    std::atomic<std::int32_t> rows_{0};
    std::atomic<std::int32_t> mode_{fecNone};
    CCritSec filterLock_;
    CRtpFecFilterInputPin input_;
    CRtpFecFilterOutputPin fecA_;
    CRtpFecFilterOutputPin fecB_;
    Protection protection_;
};

}  // namespace mvrtpfec
