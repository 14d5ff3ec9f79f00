#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace mvrtpfec {

inline constexpr std::size_t mpeg1AudioHeaderSize = 4;

/// Size in bytes of the frame that begins with this header, header included (ISO/IEC 11172-3, 2.4.3.1); all
/// three layers. 0 when a field of it is reserved or forbidden, and for a free-format frame, whose size its
/// header doesn't tell.
std::size_t mpeg1AudioFrameSize(std::span<const std::uint8_t, mpeg1AudioHeaderSize> header);

}  // namespace mvrtpfec
