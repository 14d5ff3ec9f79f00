#include <csignal>
#include <cstdint>
#include <ctime>

#include "platform/process/signals.h"

namespace platform {

namespace {

constexpr std::int64_t nanosecondsPerMillisecond = 1'000'000;

volatile std::sig_atomic_t interrupted = 0;
std::int64_t when = 0;  ///< ms; the handler's alone

std::int64_t milliseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / nanosecondsPerMillisecond;
}

void remember(int signal) {
    if (interrupted == 0) {
        when = milliseconds();
        interrupted = 1;
    } else if (milliseconds() - when >= oneEvent) {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }
}

}  // namespace

void ignoreWriteSignals() noexcept {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void ignoreHangUp() noexcept {
    std::signal(SIGHUP, SIG_IGN);
}

void watchForInterruption() noexcept {
    // Without SA_RESTART, so that a read that waits for a silent pipe fails and the work unwinds.
    struct sigaction action {};
    action.sa_handler = remember;
    // One of them at a time.
    sigaddset(&action.sa_mask, SIGINT);
    sigaddset(&action.sa_mask, SIGTERM);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool wasInterrupted() noexcept {
    return interrupted != 0;
}

}  // namespace platform
