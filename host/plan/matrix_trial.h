#pragma once

#include <cstdint>

#include "host/graph/channel.h"
#include "host/graph/matrix_config.h"
#include "host/plan/loss_trace.h"

namespace mvrtpfec {

struct TrialFigures {
    std::uint64_t sent = 0;       ///< media packets
    std::uint64_t dropped = 0;    ///< of them, by the channel
    std::uint64_t delivered = 0;  ///< of them, to the output

    /// Share of the media that are missing after repair.
    double residualLoss() const;
};

/// Sends `packets` media packets through composer, channel, guard and decoder, as the filters have them. The
/// same figures for the same arguments on every machine.
TrialFigures tryMatrix(const MatrixConfig& matrix, const ChannelConfig& channel, std::uint64_t packets);

/// The same over a network that loses what a trace says, again and again; each stream meets it at another
/// place.
TrialFigures tryMatrix(const MatrixConfig& matrix, const LossTrace& trace, std::uint64_t packets);

}  // namespace mvrtpfec
