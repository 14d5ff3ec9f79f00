#pragma once

#include <cstdint>

#include <unknwn.h>

#include "mvrtpfec/fec_totals.h"
#include "mvrtpfec/log_perf.h"

namespace mvrtpfec {

/// The receiver filter, "Morvane Rtp Fec In".
inline constexpr CLSID CLSID_RtpFecIn{
    0xA1BBBAC0, 0x5734, 0x4514, {0x8F, 0x52, 0x46, 0xA1, 0x38, 0xA5, 0xB5, 0xE8}};

/// Its property page, which another module supplies.
inline constexpr CLSID CLSID_RtpFecInPropertyPage{
    0x34AF2647, 0x5E4D, 0x403E, {0xAC, 0x77, 0x3C, 0x13, 0xD6, 0x2F, 0xF6, 0x93}};

/// The name under which the pool of its output registers with a logger.
inline constexpr const char* rtpFecInPool = "rtp_fec_in";

/// Hears of samples that could not be read. Called on the filter's worker thread; it must not call back
/// into the filter.
struct IErrorSink {
    virtual void OnError(HRESULT error) = 0;

protected:
    ~IErrorSink() = default;
};

inline constexpr IID IID_IRtpFecInConfig{
    0x4A50A4E5, 0x13AA, 0x47FF, {0xBD, 0x59, 0x26, 0xBF, 0x1C, 0x3B, 0xD8, 0x8B}};

/// Settings and statistics of the receiver filter, in any state and from any thread.
struct IRtpFecInConfig : IUnknown {
    /// Where log texts and buffer-full reports go; null for the debugger output. At once, without a lock and
    /// without a reference: the logger must outlive the filter or be replaced while no packet is under way.
    virtual HRESULT STDMETHODCALLTYPE SetLogPerf(mvn::log::ILogPerf* logger) = 0;
    /// Null for none. As SetLogPerf.
    virtual HRESULT STDMETHODCALLTYPE SetErrorSink(IErrorSink* sink) = 0;
    /// Packets found missing, rebuilt, given up, and received, as the present decoder counts them; it starts
    /// afresh when it has to reject a packet. E_FAIL, and nothing written, while there is none (stopped).
    /// Waits while the decoder delivers downstream.
    virtual HRESULT STDMETHODCALLTYPE GetStatistics(std::uint64_t* lost, std::uint64_t* rebuilt,
                                                    std::uint64_t* abandoned, std::uint64_t* received) = 0;

protected:
    ~IRtpFecInConfig() = default;
};

/// Of the run since the filter last left the stopped state.
using RtpFecInTotals = FecTotals;

inline constexpr IID IID_IRtpFecInTotals{
    0x6D0C1F5E, 0x8B0A, 0x4C57, {0x9B, 0x42, 0x2E, 0xF7, 0x61, 0xA8, 0x35, 0xD0}};

/// What IRtpFecInConfig::GetStatistics forgets with every decoder: the sums over a run.
struct IRtpFecInTotals : IUnknown {
    /// In any state and from any thread; they stay readable after Stop. E_POINTER without `totals`. Waits
    /// while the decoder delivers downstream.
    virtual HRESULT STDMETHODCALLTYPE GetTotals(RtpFecInTotals* totals) = 0;

protected:
    ~IRtpFecInTotals() = default;
};

}  // namespace mvrtpfec
