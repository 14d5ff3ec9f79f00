#include "host/io/pcr_clock.h"

namespace mvrtpfec {

std::optional<PacketRate> PcrClock::rateBetween(std::uint64_t from, const Pcr& to, std::uint64_t packets) {
    const std::uint64_t ticks = (to.ticks + pcrModulus - from) % pcrModulus;
    if (to.startsNewTimeBase || ticks == 0 || ticks > pcrFrequency) return std::nullopt;
    return PacketRate{ticks, packets};
}

void PcrClock::advance(std::uint64_t packets, const std::optional<Pcr>& end) {
    clock_ = nextClock_;
    elapsedTicks_ = nextElapsedTicks_;
    if (end) rate_ = rateBetween(clock_, *end, packets).value_or(rate_);
    const std::uint64_t ticks = rate_.ticksIn(packets);
    nextClock_ = end ? end->ticks : (clock_ + ticks) % pcrModulus;
    nextElapsedTicks_ = elapsedTicks_ + ticks;
}

std::uint32_t PcrClock::rtpTimestamp(std::uint64_t index) const {
    return static_cast<std::uint32_t>((clock_ + rate_.ticksIn(index)) % pcrModulus / 300);
}

std::chrono::nanoseconds PcrClock::elapsed(std::uint64_t index) const {
    const std::uint64_t ticks = elapsedTicks_ + rate_.ticksIn(index);
    return std::chrono::nanoseconds(ticks / 27 * 1000 + ticks % 27 * 1000 / 27);
}

}  // namespace mvrtpfec
