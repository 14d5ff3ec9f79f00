#include "tests/guard/channel.h"

#include <limits>

namespace mvrtpfec::testing {

namespace {

constexpr double delayedShare = 0.1;

}  // namespace

Channel::Channel(const Impairment& impairment, Wire output)
    : impairment_(impairment), output_(std::move(output)), random_(impairment.seed) {}

void Channel::push(const WirePacket& packet) {
    ++place_;
    letOutUpTo(place_);
    if (isLost()) return;
    travel(packet);
    if (random_.chance(impairment_.duplicate)) travel(packet);
    letOutUpTo(place_);
}

bool Channel::isLost() {
    const double loss = impairment_.loss;
    const bool bursty = impairment_.burst > 1;
    const double enter = bursty ? loss / (impairment_.burst * (1 - loss)) : loss;
    const double stay = bursty ? 1 - 1 / impairment_.burst : loss;
    return losing_ = random_.chance(losing_ ? stay : enter);
}

void Channel::travel(const WirePacket& packet) {
    std::uint64_t delay = 0;
    if (impairment_.reorder > 0 && random_.chance(delayedShare))
        delay = 1 + random_.below(static_cast<std::uint32_t>(impairment_.reorder));
    travelling_.push({place_ + delay, index_++, packet});
}

void Channel::letOutUpTo(std::uint64_t due) {
    for (; !travelling_.empty() && travelling_.top().due <= due; travelling_.pop())
        output_(travelling_.top().packet);
}

void Channel::finish() {
    letOutUpTo(std::numeric_limits<std::uint64_t>::max());
}

}  // namespace mvrtpfec::testing
