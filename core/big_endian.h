#pragma once

#include <cstdint>

namespace mvrtpfec {

// Multi-byte header fields are big-endian wherever they stand. The caller has checked the bounds.

constexpr std::uint16_t readBigEndian16(const std::uint8_t* at) {
    return static_cast<std::uint16_t>(at[0] << 8 | at[1]);
}

constexpr std::uint32_t readBigEndian32(const std::uint8_t* at) {
    return std::uint32_t{readBigEndian16(at)} << 16 | readBigEndian16(at + 2);
}

constexpr void writeBigEndian16(std::uint8_t* at, std::uint16_t value) {
    at[0] = static_cast<std::uint8_t>(value >> 8);
    at[1] = static_cast<std::uint8_t>(value);
}

constexpr void writeBigEndian32(std::uint8_t* at, std::uint32_t value) {
    writeBigEndian16(at, static_cast<std::uint16_t>(value >> 16));
    writeBigEndian16(at + 2, static_cast<std::uint16_t>(value));
}

}  // namespace mvrtpfec
