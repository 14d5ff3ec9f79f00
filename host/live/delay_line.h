#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <queue>
#include <random>
#include <vector>

#include "host/io/datagram.h"
#include "host/live/media_input.h"

namespace mvrtpfec {

struct DelayConfig {
    double delay = 0;   ///< ms that every packet takes
    double jitter = 0;  ///< ms more, at most, evenly distributed
    std::uint64_t seed = 1;
};

/// Holds packets back for a while. With jitter they may overtake each other. One thread.
class DelayLine {
public:
    using Output = std::function<void(StreamPort, const std::vector<std::uint8_t>&)>;

    DelayLine(const DelayConfig& config, Output output);

    /// A packet that would be one too many under way is lost.
    void push(StreamPort port, std::vector<std::uint8_t> packet, SteadyTime now);
    /// Lets out what has been held long enough.
    void letOut(SteadyTime now);
    /// When the next one is due.
    std::optional<SteadyTime> next() const;

    std::uint64_t overflowed() const noexcept { return overflowed_; }

private:
    struct Travelling {
        SteadyTime due;
        std::uint64_t index;  ///< breaks ties: first in, first out
        StreamPort port;
        std::vector<std::uint8_t> packet;
        bool operator<(const Travelling& other) const {
            return due != other.due ? due > other.due : index > other.index;
        }
    };

    DelayConfig config_;
    Output output_;
    std::mt19937_64 random_;
    std::priority_queue<Travelling> travelling_;
    std::uint64_t pushed_ = 0;
    std::uint64_t overflowed_ = 0;
};

}  // namespace mvrtpfec
