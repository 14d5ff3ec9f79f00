#pragma once

#include <chrono>

#include "host/live/clock.h"

namespace mvrtpfec {

/// Waits for packets' times. One thread. When the times fall behind by more than a second, as after a pause
/// of the whole machine or of the input, they start anew from now instead of being caught up in one burst.
class Pacer {
public:
    explicit Pacer(Clock& clock = systemClock()) : clock_(clock) {}

    /// False when the program is to end before that time.
    bool waitUntil(SteadyTime due);
    /// Whether waitUntil() would wait.
    bool isAhead(SteadyTime due) const { return shifted(due) > clock_.now(); }

private:
    SteadyTime shifted(SteadyTime due) const { return due + shift_; }

    Clock& clock_;
    std::chrono::steady_clock::duration shift_{0};
};

}  // namespace mvrtpfec
