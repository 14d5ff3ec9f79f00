#include "host/live/looped_ts_reader.h"

#include <algorithm>
#include <utility>

namespace mvrtpfec {

namespace {

/// A file of one packet is no flood.
constexpr std::chrono::microseconds leastStep(150);
/// Streams that claim to play on for longer have breaks in their times.
constexpr std::uint64_t longestRest = 90'000;

std::chrono::nanoseconds timeOf(std::uint64_t ticks) {
    return std::chrono::nanoseconds(ticks * 100'000 / 9);
}

/// The first tick that isn't before.
std::uint64_t ticksAt(std::chrono::nanoseconds time) {
    return (static_cast<std::uint64_t>(time.count()) * 9 + 99'999) / 100'000;
}

}  // namespace

LoopedTsReader::LoopedTsReader(Opener open) : open_(std::move(open)), reader_(open_()) {}

std::optional<TimedTsPacket> LoopedTsReader::next() {
    auto packet = reader_->next();
    if (!packet && !reader_->isBroken()) {
        const std::uint64_t sent = ticksAt(latest_ + step_);
        const std::uint64_t played = roundTicks_ + continuation_.length();
        if (played > sent && played - sent <= longestRest) return fill();
        beginRound(sent);
        packet = reader_->next();
    }
    if (!packet) return std::nullopt;
    packet->elapsed += timeOf(roundTicks_);
    step_ = std::max<std::chrono::nanoseconds>(packet->elapsed - latest_, leastStep);
    latest_ = packet->elapsed;
    continuation_.apply(*packet);
    return packet;
}

void LoopedTsReader::beginRound(std::uint64_t ticks) {
    reader_ = open_();
    roundTicks_ = ticks;
    continuation_.begin(ticks);
}

TimedTsPacket LoopedTsReader::fill() {
    latest_ += step_;
    return {nullTsPacket(), 0, latest_};
}

}  // namespace mvrtpfec
