#pragma once

#include <cstdint>
#include <mutex>

namespace mvn::log {

/// Asks for a restart when buffers are found full too often in too many periods one behind the other.
/// Once the first period has passed, every tick closes one.
class RestartWatchdog {
public:
    struct Settings {
        std::uint32_t step = 1;  ///< how much time a tick stands for, in the unit of the period
        std::uint32_t periodLength = 10;
        std::uint32_t deltaThreshold = 1000;  ///< buffers found full in a period that count as too often
        std::uint32_t maximumPeriods = 10;
    };
    struct State {
        std::uint32_t total = 0;      ///< buffers found full
        std::uint32_t lastDelta = 0;  ///< of them in the last period
        std::uint32_t periodsOverThreshold = 0;
        bool needsRestart = false;  ///< stays
    };

    explicit RestartWatchdog(const Settings& settings) : settings_(settings) {}

    void countBufferFull();
    void tick();
    State state() const;

private:
    const Settings settings_;
    mutable std::mutex mutex_;
    State state_;
    std::uint32_t lastTotal_ = 0;
    std::uint32_t elapsed_ = 0;
};

}  // namespace mvn::log
