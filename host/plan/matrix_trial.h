#pragma once

#include <cstdint>

#include "host/graph/channel.h"
#include "host/graph/matrix_config.h"
#include "host/plan/loss_trace.h"
#include "host/plan/trial_figures.h"

namespace mvrtpfec {

/// Longer trials are cut to this: timestamps tell packets apart up to here.
inline constexpr std::uint64_t mostTried = 40'000'000;

/// Sends `packets` media packets through composer, channel, guard and decoder, as the filters have them,
/// between two matrices without loss on either side. The same figures for the same arguments on every
/// machine.
TrialFigures tryMatrix(const MatrixConfig& matrix, const ChannelConfig& channel, std::uint64_t packets);

/// The same over a network that loses what a trace says, again and again; each stream meets it at another
/// place.
TrialFigures tryMatrix(const MatrixConfig& matrix, const LossTrace& trace, std::uint64_t packets);

}  // namespace mvrtpfec
