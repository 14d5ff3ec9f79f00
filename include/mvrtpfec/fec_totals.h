#pragma once

#include <cstdint>

namespace mvrtpfec {

/// Packets counted by all decoders of a run: a decoder that rejects a packet is replaced, and its own
/// counters end with it.
struct FecTotals {
    std::uint64_t received = 0;
    std::uint64_t lost = 0;
    std::uint64_t rebuilt = 0;
    std::uint64_t abandoned = 0;
    std::uint64_t resets = 0;  ///< decoders replaced because they rejected a packet
};

}  // namespace mvrtpfec
