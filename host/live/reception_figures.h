#pragma once

#include <cstdint>
#include <optional>
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
    /// Datagrams that are neither media nor FEC.
    std::uint64_t foreign() const;
    std::uint64_t tooLong = 0;    ///< datagrams
    std::uint64_t refused = 0;    ///< datagrams of the output that the system did not send
    std::uint64_t notTurned = 0;  ///< standard FEC packets that could not be turned into ours
    std::uint64_t overrun = 0;    ///< datagrams that the system dropped because nobody read them in time
};

/// What comes instead of media, when that is all that comes.
std::optional<std::string> noMediaText(const ReceptionTotals& totals);

/// One of them under the name it has outside, whose end is its unit.
struct Counter {
    std::string_view name;
    std::string_view meaning;
    std::uint64_t value = 0;
};

/// All that only grow, always the same ones in the same order.
std::vector<Counter> countersOf(const ReceptionTotals& totals);

}  // namespace mvrtpfec
