#pragma once

#include <cstdint>

namespace mvrtpfec {

/// The source that streams made here name.
inline constexpr std::uint32_t ownSsrc = 0x4d565254;

}  // namespace mvrtpfec
