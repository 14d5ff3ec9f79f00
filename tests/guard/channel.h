#pragma once

#include <limits>
#include <queue>

#include "tests/guard/sender.h"

namespace mvrtpfec::testing {

struct Impairment {
    double loss = 0;       ///< average share of packets lost, media and FEC alike
    double burst = 1;      ///< mean length of a loss burst; 1 is independent loss
    int reorder = 0;       ///< places by which a packet may be overtaken
    double duplicate = 0;  ///< share of packets that come twice
    std::uint64_t seed = 1;
};

/// A network that loses (two-state Gilbert model), delays and repeats packets.
class Channel {
public:
    Channel(const Impairment& impairment, Wire output)
        : impairment_(impairment), output_(std::move(output)), random_(impairment.seed) {}

    void push(const WirePacket& packet) {
        ++place_;
        letOutUpTo(place_);
        if (isLost()) return;
        travel(packet);
        if (random_.chance(impairment_.duplicate)) travel(packet);
        letOutUpTo(place_);
    }
    void finish() { letOutUpTo(std::numeric_limits<std::uint64_t>::max()); }

private:
    static constexpr double delayedShare = 0.1;

    struct Travelling {
        std::uint64_t due;
        std::uint64_t index;  ///< breaks ties: first sent, first there
        WirePacket packet;
        bool operator<(const Travelling& other) const {
            return due != other.due ? due > other.due : index > other.index;
        }
    };

    bool isLost() {
        const double loss = impairment_.loss;
        const bool bursty = impairment_.burst > 1;
        const double enter = bursty ? loss / (impairment_.burst * (1 - loss)) : loss;
        const double stay = bursty ? 1 - 1 / impairment_.burst : loss;
        return losing_ = random_.chance(losing_ ? stay : enter);
    }
    void travel(const WirePacket& packet) {
        std::uint64_t delay = 0;
        if (impairment_.reorder > 0 && random_.chance(delayedShare))
            delay = 1 + random_.below(static_cast<std::uint32_t>(impairment_.reorder));
        travelling_.push({place_ + delay, index_++, packet});
    }
    void letOutUpTo(std::uint64_t due) {
        for (; !travelling_.empty() && travelling_.top().due <= due; travelling_.pop())
            output_(travelling_.top().packet);
    }

    Impairment impairment_;
    Wire output_;
    Random random_;
    bool losing_ = false;
    std::uint64_t place_ = 0;
    std::uint64_t index_ = 0;
    std::priority_queue<Travelling> travelling_;
};

}  // namespace mvrtpfec::testing
