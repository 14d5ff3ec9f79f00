#pragma once

#include <cstddef>
#include <cstdint>

namespace mvrtpfec {

/// target[i] ^= source[i] for i below count; the ranges must not overlap.
/// A plain loop on purpose: the compiler makes vectors of it, and memory is the limit, not their width.
inline void xorBytes(std::uint8_t* __restrict target, const std::uint8_t* __restrict source,
                     std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) target[i] ^= source[i];
}

}  // namespace mvrtpfec
