#include "support/log/restart_watchdog.h"

namespace mvn::log {

void RestartWatchdog::countBufferFull() {
    const std::lock_guard lock(mutex_);
    ++state_.total;
}

void RestartWatchdog::tick() {
    const std::lock_guard lock(mutex_);
    if (elapsed_ < settings_.periodLength) {
        elapsed_ += settings_.step;
    } else {
        state_.lastDelta = state_.total - lastTotal_;
        state_.periodsOverThreshold =
            state_.lastDelta >= settings_.deltaThreshold ? state_.periodsOverThreshold + 1 : 0;
    }
    lastTotal_ = state_.total;
    if (state_.periodsOverThreshold >= settings_.maximumPeriods) state_.needsRestart = true;
}

RestartWatchdog::State RestartWatchdog::state() const {
    const std::lock_guard lock(mutex_);
    return state_;
}

}  // namespace mvn::log
