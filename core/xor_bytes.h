#pragma once

#include <cstddef>
#include <cstdint>

namespace mvrtpfec {

/// Bytes that one turn of the loops below takes: a cache line, so that the compiler makes straight runs
/// of vector instructions of it. Their width hardly matters, memory is the limit.
inline constexpr std::size_t xorBlock = 64;

/// target[i] ^= source[i] for i below count; the ranges must not overlap.
inline void xorBytes(std::uint8_t* __restrict target, const std::uint8_t* __restrict source,
                     std::size_t count) {
    std::size_t i = 0;
    for (; i + xorBlock <= count; i += xorBlock) {
        for (std::size_t j = i; j < i + xorBlock; ++j) target[j] ^= source[j];
    }
    for (; i < count; ++i) target[i] ^= source[i];
}

/// The same into two targets, the source read once.
inline void xorBytes(std::uint8_t* __restrict first, std::uint8_t* __restrict second,
                     const std::uint8_t* __restrict source, std::size_t count) {
    std::size_t i = 0;
    for (; i + xorBlock <= count; i += xorBlock) {
        for (std::size_t j = i; j < i + xorBlock; ++j) {
            first[j] ^= source[j];
            second[j] ^= source[j];
        }
    }
    for (; i < count; ++i) {
        first[i] ^= source[i];
        second[i] ^= source[i];
    }
}

}  // namespace mvrtpfec
