#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <queue>
#include <random>
#include <vector>

#include "host/io/datagram.h"

namespace mvrtpfec {

struct ChannelConfig {
    double loss = 0.02;       ///< average share of media packets lost
    double fecLoss = 0.02;    ///< the same of FEC packets
    double burst = 1;         ///< mean length of a loss burst, in packets; 1 is independent loss
    std::size_t reorder = 0;  ///< places by which a packet may be overtaken at most
    double duplicate = 0;     ///< share of packets that come twice
    std::uint64_t seed = 1;
};

/// Of a two-state Gilbert model.
struct LossChances {
    double enter = 0;  ///< of a burst to begin at a packet outside one
    double leave = 1;  ///< of a burst to end before the next packet
};

LossChances lossChances(double loss, double burst);

/// Widest reordering offered; a receiver gives up long before.
inline constexpr int maxReorder = 1000;

/// Throws std::invalid_argument for a share outside 0 to 1, a burst below 1, and a loss that bursts so
/// short can't make up (more than burst / (burst + 1)).
void checkChannel(const ChannelConfig& config);

/// A lossy network: drops (each port by a two-state Gilbert model of its own), reorders and repeats
/// packets, the same ones for the same seed on every machine.
class Channel {
public:
    using Output = std::function<void(StreamPort, const std::vector<std::uint8_t>&)>;

    /// Throws what checkChannel throws.
    Channel(const ChannelConfig& config, Output output);

    void push(StreamPort port, std::vector<std::uint8_t> packet);
    /// Lets out what is still under way.
    void finish();

    std::uint64_t droppedMedia() const { return droppedMedia_; }
    std::uint64_t droppedFec() const { return droppedFec_; }

private:
    struct LossState {
        LossChances chances;
        bool losing = false;
    };
    struct Travelling {
        std::uint64_t due;    ///< place in the order of arrival
        std::uint64_t index;  ///< breaks ties: first sent, first there
        StreamPort port;
        std::vector<std::uint8_t> packet;
        bool operator<(const Travelling& other) const {
            return due != other.due ? due > other.due : index > other.index;
        }
    };

    bool isLost(LossState& state);
    double draw();
    void send(StreamPort port, std::vector<std::uint8_t> packet);
    void letOutUpTo(std::uint64_t place);

    ChannelConfig config_;
    Output output_;
    std::mt19937_64 random_;
    std::array<LossState, 3> losses_;
    std::priority_queue<Travelling> travelling_;
    std::uint64_t sent_ = 0;
    std::uint64_t droppedMedia_ = 0;
    std::uint64_t droppedFec_ = 0;
};

}  // namespace mvrtpfec
