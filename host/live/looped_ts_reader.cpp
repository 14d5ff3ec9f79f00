#include "host/live/looped_ts_reader.h"

#include <algorithm>
#include <utility>

namespace mvrtpfec {

namespace {

/// A file of one packet is no flood.
constexpr std::chrono::microseconds leastStep(150);

}  // namespace

LoopedTsReader::LoopedTsReader(Opener open) : open_(std::move(open)), reader_(open_()) {}

std::optional<TimedTsPacket> LoopedTsReader::next() {
    auto packet = reader_->next();
    if (!packet && !reader_->isBroken()) {
        reader_ = open_();
        roundStart_ = latest_ + std::max<std::chrono::nanoseconds>(step_, leastStep);
        packet = reader_->next();
    }
    if (!packet) return std::nullopt;
    packet->elapsed += roundStart_;
    step_ = packet->elapsed - latest_;
    latest_ = packet->elapsed;
    return packet;
}

}  // namespace mvrtpfec
