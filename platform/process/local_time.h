#pragma once

#include <cstdint>
#include <ctime>

namespace platform {

/// The local calendar's view of a moment, in seconds since 1970; the epoch's for one that it can't express.
/// Any thread.
std::tm localTime(std::int64_t seconds) noexcept;

}  // namespace platform
