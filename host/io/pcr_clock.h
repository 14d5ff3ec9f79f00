#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "host/io/ts_packet.h"

namespace mvrtpfec {

/// Ticks of 27 MHz, at most a second of them, that pass in a number of packets. Counts below 2^38 do
/// not overflow.
struct PacketRate {
    std::uint64_t ticks;
    std::uint64_t packets;

    std::uint64_t ticksIn(std::uint64_t count) const { return count * ticks / packets; }
};

/// The time of every packet of a transport stream, computed from its clock references.
///
/// The stream is taken in spans, each from one clock reference to the next. Inside a span the packets
/// are evenly spaced (ISO/IEC 13818-1 section 2.4.2.2, equation 2-5). The rate of the span before
/// carries on where there is nothing to go by: when no reference ends the span, or when one starts a
/// new time base, stands still, goes back or jumps by more than a second. The clock then takes the
/// value of that reference; the elapsed time runs on evenly.
class PcrClock {
public:
    /// The first packet has clock value `start` (below pcrModulus) and elapsed time zero.
    PcrClock(std::uint64_t start, PacketRate rate) : clock_(start), rate_(rate) {}

    /// Goes to the next span: `packets` (at least 1) of them up to, and without, the one that carries
    /// `end`.
    void advance(std::uint64_t packets, const std::optional<Pcr>& end);

    /// Of packet `index` in the span, counted from 0: 90 kHz, modulo 2^32.
    std::uint32_t rtpTimestamp(std::uint64_t index) const;
    /// Since the first packet of the stream.
    std::chrono::nanoseconds elapsed(std::uint64_t index) const;

    /// The rate between two clock references, or none when they do not belong together.
    static std::optional<PacketRate> rateBetween(std::uint64_t from, const Pcr& to, std::uint64_t packets);

private:
    std::uint64_t clock_;  ///< at the first packet of the span
    std::uint64_t elapsedTicks_ = 0;
    PacketRate rate_;
    std::uint64_t nextClock_ = clock_;  ///< at the first packet of the next span
    std::uint64_t nextElapsedTicks_ = 0;
};

}  // namespace mvrtpfec
