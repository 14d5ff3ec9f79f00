#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <limits>
#include <queue>
#include <vector>

#include "host/plan/drawn_losses.h"
#include "host/plan/staggered_matrix.h"
#include "host/plan/trial_figures.h"

namespace mvrtpfec {

/// What composer, guard and decoder make of a stream with losses, found from the groups of the packets that
/// are lost alone: a group that lacks one packet gives it back, one that lacks more waits while the
/// decoder's window of two matrices holds it, and one that crosses sequence number 65535 is of no use.
///
/// Before and behind the packets that count the stream goes on for two matrices without loss.
class MatrixSimulation {
public:
    MatrixSimulation(const MatrixConfig& matrix, DrawnLosses& losses);

    /// Ends early when more than `mostFaults` have been found; `sent` says where.
    TrialFigures run(std::uint64_t packets,
                     std::uint64_t mostFaults = std::numeric_limits<std::uint64_t>::max());

private:
    static constexpr std::size_t remembered = 1024;  ///< more than the window and the groups in it

    struct Later {
        bool operator()(const FecGroup& one, const FecGroup& other) const { return one.last > other.last; }
    };

    void lose(std::uint64_t place);
    void expect(const FecGroup& group);
    void passTo(std::uint64_t place);
    void arrive(const FecGroup& group);
    bool comes(const FecGroup& group);
    void repair();
    bool isUsedUp(const FecGroup& group, bool& found);
    void release(std::uint64_t place);

    bool& missing(std::uint64_t place) { return missing_[place % remembered]; }

    StaggeredMatrix matrix_;
    DrawnLosses& losses_;
    std::uint64_t window_;
    std::uint64_t head_;
    std::uint64_t end_ = 0;

    std::array<bool, remembered> missing_{};
    std::deque<std::uint64_t> lost_;                                        ///< not released yet
    std::priority_queue<FecGroup, std::vector<FecGroup>, Later> expected_;  ///< FEC packets of what is lost
    std::array<std::uint64_t, 100> expectedOf_{};  ///< the last packet of the group expected, by column
    std::uint64_t expectedRow_ = 0;
    std::vector<FecGroup> waiting_;  ///< FEC packets that came and miss more than one
    TrialFigures figures_;
};

}  // namespace mvrtpfec
