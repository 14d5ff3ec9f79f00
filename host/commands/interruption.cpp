#include "host/commands/interruption.h"

#include <csignal>
#include <stdexcept>

namespace mvrtpfec {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void remember(int signal) {
    interrupted = 1;
    std::signal(signal, SIG_DFL);
}

}  // namespace

void watchForInterruption() {
    // Without SA_RESTART, so that a read that waits for a silent pipe fails and the work unwinds.
    struct sigaction action {};
    action.sa_handler = remember;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

void throwIfInterrupted() {
    if (interrupted != 0) throw std::runtime_error("interrupted");
}

}  // namespace mvrtpfec
