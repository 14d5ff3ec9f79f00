#include "host/live/clock.h"

#include <thread>

namespace mvrtpfec {

namespace {

class SystemClock final : public Clock {
public:
    SteadyTime now() override { return std::chrono::steady_clock::now(); }
    void sleepUntil(SteadyTime time) override { std::this_thread::sleep_until(time); }
};

}  // namespace

Clock& systemClock() {
    static SystemClock clock;
    return clock;
}

}  // namespace mvrtpfec
