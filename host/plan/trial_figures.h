#pragma once

#include <cstdint>

#include "host/plan/rare_count.h"

namespace mvrtpfec {

/// What stays lost of a stream after its repair, in order.
///
/// A fault is what a viewer sees as one: all packets lost within a hundred, our largest matrix, from the
/// first of them on. A longer loss counts as several, so that no network gets better by losing more.
class ResidualLosses {
public:
    static constexpr std::uint64_t packetsOfFault = 100;

    void add(std::uint64_t position);

    const RareCount& packets() const { return packets_; }
    const RareCount& faults() const { return faults_; }

private:
    RareCount packets_;
    RareCount faults_;
    std::uint64_t faultEnd_ = 0;
};

/// A stream that was sent through a matrix and a network. Bounds hold with 95 % certainty.
struct TrialFigures {
    std::uint64_t sent = 0;     ///< media packets
    std::uint64_t dropped = 0;  ///< of them, by the network
    ResidualLosses lost;        ///< of them, after the repair
    double meanBurst = 1;       ///< of the network; so much a fault costs as long as none was seen
    double rounds = 1;          ///< how often a trace was met: more of them tell no more of its network

    std::uint64_t delivered() const { return sent - lost.packets().count(); }
    /// Share of the media that are missing after repair.
    double residualLoss() const;
    double residualLossBound() const;
    /// Faults for each media packet.
    double faultRate() const;
    double faultRateBound() const;
};

}  // namespace mvrtpfec
