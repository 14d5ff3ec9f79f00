#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace mvrtpfec {

/// Replaces what `out` holds by the bits [first, last) of `bytes`, most significant first, the last byte
/// filled with zeros. The range lies inside.
void copyBits(std::span<const std::uint8_t> bytes, std::size_t first, std::size_t last,
              std::vector<std::uint8_t>& out);

}  // namespace mvrtpfec
