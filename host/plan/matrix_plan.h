#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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
    std::optional<LossTrace> trace;      ///< a measured one in the channel's place
    std::optional<double> mostLatency;   ///< ms, two matrices deep
    std::optional<double> mostOverhead;  ///< share
    std::uint64_t packets = 20'000;      ///< of each trial
};

struct PlanEntry {
    MatrixConfig matrix;
    MatrixCost cost;
    TrialFigures trial;
    std::optional<double> latency;  ///< ms, one matrix deep
    std::string preset;             ///< its name, empty for most
};

/// The matrices within the limits, best first: by what is still lost, then by overhead, then by delay.
std::vector<PlanEntry> planMatrices(const PlanRequest& request);

}  // namespace mvrtpfec
