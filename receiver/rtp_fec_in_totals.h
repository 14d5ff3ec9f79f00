#pragma once

#include <cstdint>

#include "platform/component.h"

namespace mvrtpfec {

/// Packets counted by all decoders since the filter last left the stopped state.
struct RtpFecInTotals {
    std::uint64_t received = 0;
    std::uint64_t lost = 0;
    std::uint64_t rebuilt = 0;
    std::uint64_t abandoned = 0;
    std::uint64_t resets = 0;  ///< decoders replaced because they rejected a packet
};

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
