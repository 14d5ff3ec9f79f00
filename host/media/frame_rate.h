#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace mvrtpfec {

inline constexpr std::uint64_t unitsOfTime = 10'000'000;  ///< 100 ns in a second

/// Pictures in a number of seconds, neither of them 0.
struct FrameRate {
    std::uint32_t frames = 25;
    std::uint32_t seconds = 1;

    /// When picture `index` is due, in 100 ns; below 2^31 of them.
    std::int64_t timeOf(std::uint64_t index) const {
        const std::uint64_t ticks = index * seconds;
        return static_cast<std::int64_t>(ticks / frames * unitsOfTime +
                                         (ticks % frames * unitsOfTime + frames / 2) / frames);
    }
};

/// "25", "29.97" or "30000/1001"; none for what is no rate between 1 in 1000 seconds and 1000 a second.
std::optional<FrameRate> parseFrameRate(std::string_view text);

}  // namespace mvrtpfec
