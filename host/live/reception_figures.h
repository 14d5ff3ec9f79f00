#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/live/reception_meter.h"
#include "host/stages/repair_chain.h"

namespace mvrtpfec {

/// Everything that a receiver counts, since its start.
struct ReceptionTotals {
    ReceptionFigures reception;
    RepairFigures repair;
    std::uint64_t lostForGood = 0;  ///< media packets missing in the output
    std::uint64_t tooLong = 0;      ///< datagrams
    std::uint64_t refused = 0;      ///< datagrams of the output that the system did not send
    std::uint64_t notTurned = 0;    ///< standard FEC packets that could not be turned into ours
    std::uint64_t overrun = 0;      ///< datagrams that the system dropped because nobody read them in time

    /// Most media packets missing in a row; without a guard overtaken ones count.
    std::uint64_t longestBurst() const {
        return repair.guard ? repair.guard->longestHole : reception.longestGap;
    }
    /// Times that the source began anew: as the guard judges, which a stray packet doesn't deceive.
    std::uint64_t restarts() const { return repair.guard ? repair.guard->restarts : reception.restarts; }
};

/// The matrix as learnt: "10 x 10", "L 10" of rows alone, "no FEC yet".
std::string matrixText(const ReceptionFigures& reception);

/// One of them under the name it has outside, whose end is its unit.
struct Counter {
    std::string_view name;
    std::string_view meaning;
    std::uint64_t value = 0;
};

/// All that only grow, always the same ones in the same order.
std::vector<Counter> countersOf(const ReceptionTotals& totals);

}  // namespace mvrtpfec
