#pragma once

#include <cstdint>
#include <functional>

#include "framework/base/com_ptr.h"
#include "platform/graph/media_filters.h"

namespace mvrtpfec {

/// Milliseconds since 1970.
using WallClock = std::function<std::uint64_t()>;

/// The system's.
std::uint64_t systemWallTime();

/// A reference clock read in ticks of 90 kHz, whole milliseconds of them, and the wall clock of its first
/// reading. Time stands still between readings.
class SendClock {
public:
    /// Reads both. Throws mvn::COMException when the clock gives no time.
    SendClock(IReferenceClock* clock, const WallClock& wallClock);

    void refresh();

    std::uint64_t now90k() const noexcept { return now90k_; }
    /// Wall time of the last reading, ms since 1970.
    std::uint64_t wallTime() const noexcept { return wallStart_ + (now90k_ - start90k_) / 90; }

private:
    std::uint64_t read() const;

    CComPtr<IReferenceClock> clock_;
    std::uint64_t wallStart_;
    std::uint64_t start90k_;
    std::uint64_t now90k_;
};

}  // namespace mvrtpfec
