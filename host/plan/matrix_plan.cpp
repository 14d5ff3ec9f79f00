#include "host/plan/matrix_plan.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <tuple>

#include "core/fec_composer.h"
#include "host/plan/drawn_losses.h"
#include "host/plan/matrix_presets.h"
#include "host/plan/matrix_simulation.h"

namespace mvrtpfec {

namespace {

constexpr std::array<int, 8> sizes{4, 5, 6, 8, 10, 12, 16, 20};
constexpr int largestMatrix = 100;
/// Of a trial; those that go packet by packet have fewer.
constexpr std::uint64_t simulatedPackets = 1'000'000;
constexpr std::uint64_t triedPackets = 20'000;
/// Where one fault in so many packets is asked for, ten times as many tell.
constexpr double targetTimes = 10;
/// Packets lost that take a second or two, and packets of a trial that do.
constexpr double mostLosses = 1e7;
constexpr double mostTargetTried = 1e5;

bool isSame(const MatrixConfig& one, const MatrixConfig& other) {
    return one.mode == other.mode && one.columns == other.columns && one.rows == other.rows;
}

std::string presetOf(const MatrixConfig& matrix) {
    for (const MatrixPreset& preset : matrixPresets)
        if (isSame(preset.matrix, matrix)) return std::string(preset.name);
    return "";
}

std::vector<MatrixConfig> candidates() {
    std::vector<MatrixConfig> all;
    for (const int columns : sizes) {
        // A row's protection doesn't depend on the rows.
        all.push_back({fecRow, columns, sizes.front()});
        for (const int rows : sizes) {
            if (columns * rows > largestMatrix) continue;
            all.push_back({fecColumn, columns, rows});
            all.push_back({fecBoth, columns, rows});
        }
    }
    return all;
}

std::optional<double> latencyOf(const MatrixCost& cost, const PlanRequest& request) {
    if (!request.bitRate) return std::nullopt;
    return delayOf(cost, *request.bitRate);
}

bool isWithin(const MatrixCost& cost, const PlanRequest& request) {
    if (request.mostOverhead && cost.overhead > *request.mostOverhead) return false;
    const auto latency = latencyOf(cost, request);
    return !request.mostLatency || !latency || 2 * *latency <= *request.mostLatency;
}

/// What is neither reordered nor repeated needs no packet to be sent.
bool canSimulate(const PlanRequest& request) {
    return request.trace || (request.channel.reorder == 0 && request.channel.duplicate == 0);
}

double lossOf(const PlanRequest& request) {
    return request.trace ? request.trace->loss() : request.channel.loss;
}

TrialFigures tryOne(const MatrixConfig& matrix, const PlanRequest& request, std::uint64_t packets,
                    std::uint64_t mostFaults = std::numeric_limits<std::uint64_t>::max()) {
    if (request.trace) {
        TraceLosses losses(*request.trace);
        TrialFigures figures = MatrixSimulation(matrix, losses).run(packets, mostFaults);
        figures.meanBurst = std::max(1.0, request.trace->meanBurst());
        figures.rounds = std::max(
            1.0, static_cast<double>(figures.sent) / static_cast<double>(request.trace->lost.size()));
        return figures;
    }
    ChannelLosses losses(request.channel);
    TrialFigures figures = canSimulate(request) ? MatrixSimulation(matrix, losses).run(packets, mostFaults)
                                                : tryMatrix(matrix, request.channel, packets);
    figures.meanBurst = request.channel.burst;
    return figures;
}

/// As many as tell whether a target is held, or as can be had in a few seconds. A trace tells no more than it
/// has.
std::uint64_t targetPackets(const PlanRequest& request) {
    if (request.packets || request.trace) return usualPackets(request);
    const double wanted = targetTimes * request.target->packetsForFault(request.bitRate);
    const double most = canSimulate(request) ? mostLosses / std::max(lossOf(request), 1e-9) : mostTargetTried;
    return static_cast<std::uint64_t>(
        std::max(static_cast<double>(usualPackets(request)), std::ceil(std::min(wanted, most))));
}

/// A trace met again tells nothing new.
std::uint64_t newPackets(const PlanRequest& request, std::uint64_t packets) {
    return request.trace ? std::min<std::uint64_t>(packets, request.trace->lost.size()) : packets;
}

bool isLeaner(const PlanEntry& one, const PlanEntry& other) {
    return std::tuple(one.cost.overhead, one.cost.delayPackets) <
           std::tuple(other.cost.overhead, other.cost.delayPackets);
}

/// Tries them from the leanest on until one holds the target. Where so few packets can't tell, only the best
/// one is tried, for the bound that it reaches.
void seekTarget(std::vector<PlanEntry>& entries, const PlanRequest& request) {
    const double rate = 1 / request.target->packetsForFault(request.bitRate);
    const std::uint64_t packets = targetPackets(request);
    const auto faultsAllowed = static_cast<std::uint64_t>(rate * static_cast<double>(packets));
    TrialFigures faultless;
    faultless.sent = newPackets(request, packets);
    const bool canTell = faultless.faultRateBound() <= rate;
    if (canTell) std::ranges::stable_sort(entries, isLeaner);
    for (PlanEntry& entry : entries) {
        const TrialFigures trial = tryOne(entry.matrix, request, packets, faultsAllowed);
        entry.holdsTarget = trial.faultRateBound() <= rate;
        // One that failed early has told less than before.
        if (trial.sent >= entry.trial.sent) entry.trial = trial;
        if (entry.holdsTarget || !canTell) return;
    }
}

void sortBest(std::vector<PlanEntry>& entries) {
    std::ranges::stable_sort(entries, {}, [](const PlanEntry& entry) {
        return std::tuple(!entry.holdsTarget, entry.trial.residualLossBound(), entry.cost.overhead,
                          entry.cost.delayPackets);
    });
}

}  // namespace

MatrixCost costOf(const MatrixConfig& matrix) {
    MatrixCost cost;
    if (matrix.mode != fecColumn) cost.overhead += 1.0 / matrix.columns;
    if (matrix.mode != fecRow) cost.overhead += 1.0 / matrix.rows;
    cost.longestBurst = matrix.mode == fecRow ? 1 : matrix.columns;
    // A receiver of rows alone never learns their number.
    cost.delayPackets = matrix.mode == fecRow ? matrix.columns : matrix.columns * matrix.rows;
    return cost;
}

double delayOf(const MatrixCost& cost, std::uint64_t bitRate) {
    return cost.delayPackets * 1000 / packetRateOf(bitRate);
}

std::uint64_t usualPackets(const PlanRequest& request) {
    if (request.packets) return *request.packets;
    if (request.trace) return std::max<std::uint64_t>(request.trace->lost.size(), triedPackets);
    return canSimulate(request) ? simulatedPackets : triedPackets;
}

std::vector<PlanEntry> planMatrices(const PlanRequest& request) {
    std::vector<PlanEntry> entries;
    for (const MatrixConfig& matrix : candidates()) {
        const MatrixCost cost = costOf(matrix);
        if (!isWithin(cost, request)) continue;
        entries.push_back({matrix, cost, tryOne(matrix, request, usualPackets(request)),
                           latencyOf(cost, request), presetOf(matrix)});
    }
    sortBest(entries);
    if (!request.target) return entries;
    seekTarget(entries, request);
    sortBest(entries);
    return entries;
}

}  // namespace mvrtpfec
