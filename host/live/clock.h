#pragma once

#include <chrono>

namespace mvrtpfec {

using SteadyTime = std::chrono::steady_clock::time_point;

/// The time that live streams go by.
class Clock {
public:
    virtual ~Clock() = default;
    virtual SteadyTime now() = 0;
    virtual void sleepUntil(SteadyTime time) = 0;
};

/// The system's own.
Clock& systemClock();

}  // namespace mvrtpfec
