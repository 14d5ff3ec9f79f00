#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace mvrtpfec {

/// Replaces what `out` holds by the unit without its emulation prevention bytes (ISO/IEC 14496-10, 7.4.1): a
/// 03 behind exactly two zeros is left out where a further byte below 4 follows. Any input is fine.
void removeEmulationPrevention(std::span<const std::uint8_t> unit, std::vector<std::uint8_t>& out);

/// Puts a 03 behind every two zeros that a byte below 4 follows. Zeros at the very end get none, as no stop
/// bit is written for them.
std::vector<std::uint8_t> insertEmulationPrevention(std::span<const std::uint8_t> rbsp);

}  // namespace mvrtpfec
