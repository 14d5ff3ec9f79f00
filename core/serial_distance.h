#pragma once

#include <cstdint>

namespace mvrtpfec {

/// How far `to` lies ahead of `from`, the shorter way round the 65536 sequence numbers: -32768 to 32767
/// (serial number arithmetic, RFC 1982).
constexpr int serialDistance(std::uint16_t from, std::uint16_t to) {
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(to - from));
}

/// Sequence numbers further apart are of different runs of a source.
inline constexpr int sameRun = 1024;

}  // namespace mvrtpfec
