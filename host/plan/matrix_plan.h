#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/plan/fault_target.h"
#include "host/plan/loss_trace.h"
#include "host/plan/matrix_trial.h"

namespace mvrtpfec {

/// What a matrix costs and what it is good for, known without trying.
struct MatrixCost {
    double overhead = 0;   ///< FEC packets for each media packet
    int longestBurst = 0;  ///< packets lost in a row that are rebuilt in any case
    int delayPackets = 0;  ///< of one matrix; the decoder keeps packets for two
};

MatrixCost costOf(const MatrixConfig& matrix);
/// Milliseconds that one matrix lasts at a bit rate of the transport stream.
double delayOf(const MatrixCost& cost, std::uint64_t bitRate);

struct PlanRequest {
    std::optional<std::uint64_t> bitRate;  ///< of the transport stream, bits per second
    ChannelConfig channel;
    std::optional<LossTrace> trace;        ///< a measured one in the channel's place
    std::optional<double> mostLatency;     ///< ms, two matrices deep
    std::optional<double> mostOverhead;    ///< share
    std::optional<std::uint64_t> packets;  ///< of each trial, else as many as tell something
    std::optional<FaultTarget> target;
};

struct PlanEntry {
    MatrixConfig matrix;
    MatrixCost cost;
    TrialFigures trial;
    std::optional<double> latency;  ///< ms, one matrix deep
    std::string preset;             ///< its name, empty for most
    bool holdsTarget = false;       ///< with 95 % certainty, and no leaner one does
};

/// Packets of each trial where there is no target.
std::uint64_t usualPackets(const PlanRequest& request);

/// The matrices within the limits, best first: by the bound of what is still lost, then by overhead, then by
/// delay. With a target the leanest that holds it comes before all, if there is one.
std::vector<PlanEntry> planMatrices(const PlanRequest& request);

}  // namespace mvrtpfec
