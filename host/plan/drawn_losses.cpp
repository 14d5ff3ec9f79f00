#include "host/plan/drawn_losses.h"

#include <algorithm>
#include <cmath>

namespace mvrtpfec {

namespace {

/// Far behind the end of any stream, and sums of some of them are numbers still.
constexpr double endless = 0x1p60;

}  // namespace

ChannelLosses::ChannelLosses(const ChannelConfig& channel)
    : media_(lossChances(channel.loss, channel.burst)),
      fec_(lossChances(channel.fecLoss, channel.burst)),
      fecLoss_(channel.fecLoss),
      random_(channel.seed) {}

/// Above 0, up to 1.
double ChannelLosses::draw() {
    return static_cast<double>((random_() >> 11) + 1) * 0x1.0p-53;
}

/// Packets before something of this chance happens.
std::uint64_t ChannelLosses::drawRun(double chance) {
    if (chance >= 1) return 0;
    const double run = chance <= 0 ? endless : std::log(draw()) / std::log1p(-chance);
    return static_cast<std::uint64_t>(std::min(run, endless));
}

std::optional<LossBurst> ChannelLosses::nextBurst() {
    if (static_cast<double>(place_) >= endless) return std::nullopt;
    LossBurst burst;
    burst.begin = place_ + drawRun(media_.enter);
    burst.end = burst.begin + 1 + drawRun(media_.leave);
    // The packet that ended the burst came through.
    place_ = burst.end + 1;
    return burst;
}

/// From the state at the last one asked for, with what the model says of so many steps.
bool ChannelLosses::losesFec(StreamPort port, std::uint64_t index) {
    Asked& asked = asked_.at(port == StreamPort::fecA ? 0 : 1);
    const auto steps = static_cast<double>(index - asked.next + 1);
    const double left = std::pow(1 - fec_.enter - fec_.leave, steps);
    const double chance = fecLoss_ + ((asked.lost ? 1.0 : 0.0) - fecLoss_) * left;
    asked = {index + 1, draw() <= chance};
    return asked.lost;
}

TraceLosses::TraceLosses(const LossTrace& trace) : trace_(trace) {
    for (std::uint64_t place = 0; place < trace.lost.size(); ++place) {
        if (!trace.lost[place]) continue;
        if (bursts_.empty() || bursts_.back().end != place) bursts_.push_back({place, place});
        ++bursts_.back().end;
    }
}

std::optional<LossBurst> TraceLosses::nextBurst() {
    if (bursts_.empty()) return std::nullopt;
    const LossBurst burst = bursts_[next_];
    const std::uint64_t round = round_;
    if (++next_ == bursts_.size()) {
        next_ = 0;
        round_ += trace_.lost.size();
    }
    return LossBurst{round + burst.begin, round + burst.end};
}

bool TraceLosses::losesFec(StreamPort port, std::uint64_t index) {
    return trace_.lost[(startOf(port, trace_) + index) % trace_.lost.size()];
}

}  // namespace mvrtpfec
