#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <random>
#include <vector>

#include "host/graph/channel.h"
#include "host/plan/loss_trace.h"

namespace mvrtpfec {

/// Media packets lost in a row, by place: from `begin` up to, and without, `end`.
struct LossBurst {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

/// What a network loses of the three streams, asked in order and from loss to loss, so that what comes
/// through takes no time.
class DrawnLosses {
public:
    virtual ~DrawnLosses() = default;

    /// The next one, none when no more comes.
    virtual std::optional<LossBurst> nextBurst() = 0;
    /// Whether the FEC packet of this number, above the one asked for last on this port, is lost.
    virtual bool losesFec(StreamPort port, std::uint64_t index) = 0;
};

/// As Channel loses, in law though not in each packet.
class ChannelLosses final : public DrawnLosses {
public:
    explicit ChannelLosses(const ChannelConfig& channel);

    std::optional<LossBurst> nextBurst() override;
    bool losesFec(StreamPort port, std::uint64_t index) override;

private:
    struct Asked {
        std::uint64_t next = 0;  ///< index behind the last one asked for
        bool lost = false;
    };

    double draw();
    std::uint64_t drawRun(double chance);

    LossChances media_;
    LossChances fec_;
    double fecLoss_;
    std::uint64_t place_ = 0;
    std::array<Asked, 2> asked_;
    std::mt19937_64 random_;
};

/// As a trace says, again and again; each stream meets it at another place.
class TraceLosses final : public DrawnLosses {
public:
    /// The trace has packets and outlives this.
    explicit TraceLosses(const LossTrace& trace);

    std::optional<LossBurst> nextBurst() override;
    bool losesFec(StreamPort port, std::uint64_t index) override;

    /// Where in the trace a stream meets it.
    static std::size_t startOf(StreamPort port, const LossTrace& trace) {
        return trace.lost.size() * static_cast<std::size_t>(port) / 3;
    }

private:
    const LossTrace& trace_;
    std::vector<LossBurst> bursts_;  ///< of one round
    std::size_t next_ = 0;
    std::uint64_t round_ = 0;  ///< its begin
};

}  // namespace mvrtpfec
