#include <csignal>

#include "platform/signals.h"

namespace platform {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void remember(int signal) {
    interrupted = 1;
    std::signal(signal, SIG_DFL);
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
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool wasInterrupted() noexcept {
    return interrupted != 0;
}

}  // namespace platform
