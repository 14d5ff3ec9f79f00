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
    std::signal(SIGINT, remember);
    std::signal(SIGTERM, remember);
}

void throwIfInterrupted() {
    if (interrupted != 0) throw std::runtime_error("interrupted");
}

}  // namespace mvrtpfec
