#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace mvrtpfec {

/// What a unit begins with: a byte prefix, then one byte compared under a mask. At most `longest` bytes in
/// all.
struct StartPattern {
    static constexpr std::size_t longest = 4;

    std::span<const std::uint8_t> prefix;
    std::uint8_t value;
    std::uint8_t mask;
    /// Bytes of the unit that stand in front of the pattern.
    std::size_t lead = 0;

    std::size_t size() const noexcept { return prefix.size() + 1; }
};

}  // namespace mvrtpfec
