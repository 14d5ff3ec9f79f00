#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "host/live/reception_figures.h"
#include "mvrtpfec/log_perf.h"

namespace mvrtpfec {

/// Tells in the log what happens to a stream: once, and the same again after ten seconds at the earliest.
class ReceptionLog {
public:
    explicit ReceptionLog(mvn::log::ILogger& log) : log_(log) {}

    /// The counters as they stand, asked for about once a second.
    void note(const ReceptionTotals& totals, SteadyTime now);

private:
    enum Event { restarts, losses, repeats, overruns, refusals, eventCount };

    void noteForeign(const ReceptionTotals& totals);
    void noteMatrix(const FecFigures& fec, SteadyTime now);
    void noteSilence(std::uint64_t media, SteadyTime now);
    void noteCount(Event event, std::uint64_t count, std::uint64_t least, SteadyTime now);

    struct Told {
        std::uint64_t count = 0;
        std::optional<SteadyTime> when;
    };

    mvn::log::ILogger& log_;
    std::array<Told, eventCount> told_;
    std::string seenMatrix_;  ///< when last asked
    std::string matrix_;      ///< told
    std::optional<SteadyTime> matrixTold_;
    std::uint64_t media_ = 0;
    std::optional<SteadyTime> newest_;  ///< when media came last
    bool isSilent_ = false;
    bool isForeignTold_ = false;
};

}  // namespace mvrtpfec
