#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace mvrtpfec {

/// Bytes of header that tell the size of an AC-3 or E-AC-3 frame: up to bsid.
inline constexpr std::size_t ac3SizeEnd = 6;

/// Size in bytes of the syncframe that begins with these bytes, sync word 0B 77 included; 0 when a field of
/// them is reserved. bsid up to 10 is AC-3, whose size goes by ATSC A/52 table 5.18; 11 to 16 is E-AC-3, with
/// the size in its header (A/52, E.2.3.1.3).
std::size_t ac3FrameSize(std::span<const std::uint8_t, ac3SizeEnd> bytes);

}  // namespace mvrtpfec
