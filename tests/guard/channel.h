#pragma once

#include <cstdint>
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
    Channel(const Impairment& impairment, Wire output);

    void push(const WirePacket& packet);
    void finish();

private:
    struct Travelling {
        std::uint64_t due;
        std::uint64_t index;  ///< breaks ties: first sent, first there
        WirePacket packet;
        bool operator<(const Travelling& other) const {
            return due != other.due ? due > other.due : index > other.index;
        }
    };

    bool isLost();
    void travel(const WirePacket& packet);
    void letOutUpTo(std::uint64_t due);

    Impairment impairment_;
    Wire output_;
    Random random_;
    bool losing_ = false;
    std::uint64_t place_ = 0;
    std::uint64_t index_ = 0;
    std::priority_queue<Travelling> travelling_;
};

}  // namespace mvrtpfec::testing
