#include "host/plan/matrix_plan.h"

#include <algorithm>
#include <array>
#include <tuple>

#include "core/fec_composer.h"
#include "host/plan/matrix_presets.h"

namespace mvrtpfec {

namespace {

constexpr std::array<int, 8> sizes{4, 5, 6, 8, 10, 12, 16, 20};
constexpr int largestMatrix = 100;
constexpr double bitsOfPacket = 7 * 188 * 8;

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
    return cost.delayPackets * bitsOfPacket * 1000 / static_cast<double>(bitRate);
}

std::vector<PlanEntry> planMatrices(const PlanRequest& request) {
    std::vector<PlanEntry> entries;
    for (const MatrixConfig& matrix : candidates()) {
        const MatrixCost cost = costOf(matrix);
        if (!isWithin(cost, request)) continue;
        const TrialFigures trial = request.trace ? tryMatrix(matrix, *request.trace, request.packets)
                                                 : tryMatrix(matrix, request.channel, request.packets);
        entries.push_back({matrix, cost, trial, latencyOf(cost, request), presetOf(matrix)});
    }
    std::ranges::stable_sort(entries, {}, [](const PlanEntry& entry) {
        return std::tuple(entry.trial.sent - entry.trial.delivered, entry.cost.overhead,
                          entry.cost.delayPackets);
    });
    return entries;
}

}  // namespace mvrtpfec
