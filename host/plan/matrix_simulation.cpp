#include "host/plan/matrix_simulation.h"

#include <algorithm>

namespace mvrtpfec {

namespace {

constexpr std::uint64_t cycle = 65536;  ///< sequence numbers
constexpr std::uint64_t marginMatrices = 2;

}  // namespace

MatrixSimulation::MatrixSimulation(const MatrixConfig& matrix, DrawnLosses& losses)
    : matrix_(matrix),
      losses_(losses),
      window_(2 * matrix_.packets()),
      head_(marginMatrices * matrix_.packets()) {}

TrialFigures MatrixSimulation::run(std::uint64_t packets, std::uint64_t mostFaults) {
    end_ = head_ + packets;
    while (const auto burst = losses_.nextBurst()) {
        for (std::uint64_t place = burst->begin; place < burst->end && place < packets; ++place)
            lose(head_ + place);
        if (burst->end >= packets) break;
        if (figures_.lost.faults().count() <= mostFaults) continue;
        figures_.sent = burst->end;
        return figures_;
    }
    passTo(end_ + 2 * window_);
    figures_.sent = packets;
    return figures_;
}

void MatrixSimulation::lose(std::uint64_t place) {
    passTo(place);
    missing(place) = true;
    lost_.push_back(place);
    ++figures_.dropped;
    if (const auto row = matrix_.rowOf(place); row && row->last != expectedRow_) {
        expectedRow_ = row->last;
        expected_.push(*row);
    }
    const auto column = matrix_.columnOf(place);
    std::uint64_t& expected = expectedOf_.at(place % matrix_.columns());
    if (column && column->last != expected) {
        expected = column->last;
        expected_.push(*column);
    }
}

void MatrixSimulation::passTo(std::uint64_t place) {
    while (!expected_.empty() && expected_.top().last < place) {
        const FecGroup group = expected_.top();
        expected_.pop();
        release(group.last);
        if (comes(group)) {
            waiting_.push_back(group);
            repair();
        }
    }
    release(place);
}

bool MatrixSimulation::comes(const FecGroup& group) {
    if (group.last >= end_) return group.first / cycle == group.last / cycle;
    const std::uint64_t before = matrix_.fecBefore(marginMatrices, group.kind);
    const StreamPort port = group.kind == FecKind::row ? StreamPort::fecB : StreamPort::fecA;
    return !losses_.losesFec(port, group.fecIndex - before) && group.first / cycle == group.last / cycle;
}

/// What one group gives back may complete another.
void MatrixSimulation::repair() {
    for (bool found = true; found;) {
        found = false;
        std::erase_if(waiting_, [&](const FecGroup& group) { return isUsedUp(group, found); });
    }
}

bool MatrixSimulation::isUsedUp(const FecGroup& group, bool& found) {
    int lacking = 0;
    std::uint64_t last = 0;
    for (std::uint64_t place = group.first; place <= group.last; place += group.step) {
        if (!missing(place)) continue;
        last = place;
        if (++lacking > 1) return false;
    }
    if (lacking == 1) missing(last) = false;
    found = found || lacking == 1;
    return true;
}

/// Gives up what leaves the window when the packet at `place` is the newest. One numbered 65535 that had to
/// be rebuilt goes with the decoder, which is replaced there.
void MatrixSimulation::release(std::uint64_t place) {
    const std::uint64_t oldest = place < window_ ? 0 : place - window_;
    while (!lost_.empty() && lost_.front() < oldest) {
        const std::uint64_t released = lost_.front();
        lost_.pop_front();
        if (missing(released) || released % cycle == cycle - 1) figures_.lost.add(released - head_);
        missing(released) = false;
    }
    std::erase_if(waiting_, [&](const FecGroup& group) { return group.first < oldest; });
}

}  // namespace mvrtpfec
