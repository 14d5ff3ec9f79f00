#include "host/live/pacer.h"

#include <algorithm>
#include <thread>

#include "platform/signals.h"

namespace mvrtpfec {

namespace {

using namespace std::chrono_literals;

constexpr auto mostBehind = 1s;
/// How long an interruption may go unnoticed.
constexpr auto patience = 100ms;

}  // namespace

bool Pacer::waitUntil(SteadyTime due) {
    auto now = std::chrono::steady_clock::now();
    if (now - shifted(due) > mostBehind) shift_ = now - due;
    for (; now < shifted(due); now = std::chrono::steady_clock::now()) {
        if (platform::wasInterrupted()) return false;
        std::this_thread::sleep_until(std::min<SteadyTime>(shifted(due), now + patience));
    }
    return true;
}

}  // namespace mvrtpfec
