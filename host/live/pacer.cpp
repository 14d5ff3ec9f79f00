#include "host/live/pacer.h"

#include <algorithm>

#include "platform/process/signals.h"

namespace mvrtpfec {

namespace {

using namespace std::chrono_literals;

constexpr auto mostBehind = 1s;
/// How long an interruption may go unnoticed.
constexpr auto patience = 100ms;

}  // namespace

bool Pacer::waitUntil(SteadyTime due) {
    SteadyTime now = clock_.now();
    if (now - shifted(due) > mostBehind) shift_ = now - due;
    for (; now < shifted(due); now = clock_.now()) {
        if (platform::wasInterrupted()) return false;
        clock_.sleepUntil(std::min<SteadyTime>(shifted(due), now + patience));
    }
    return true;
}

}  // namespace mvrtpfec
