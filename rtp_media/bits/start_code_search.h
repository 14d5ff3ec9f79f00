#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace mvrtpfec {

/// Index of the first byte that is zero and followed by another zero; bytes.size() when there is none.
std::size_t findZeroPair(std::span<const std::uint8_t> bytes);

/// Index of the first 00 00 01 (ISO/IEC 14496-10, B.1.1; ISO/IEC 13818-2, 6.2.1); bytes.size() when there is
/// none.
std::size_t findStartCode(std::span<const std::uint8_t> bytes);

}  // namespace mvrtpfec
