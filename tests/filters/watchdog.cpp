#include "tests/filters/watchdog.h"

#include <cstdio>
#include <cstdlib>

#include "platform/threads/blocked_threads.h"

namespace mvrtpfec {

Watchdog::Watchdog(std::chrono::seconds patience) : patience_(patience), thread_([this] { watch(); }) {}

Watchdog::~Watchdog() {
    {
        const std::lock_guard lock(mutex_);
        done_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

void Watchdog::alive(const char* step) {
    const std::lock_guard lock(mutex_);
    step_ = step;
    ++steps_;
}

void Watchdog::watch() {
    std::unique_lock lock(mutex_);
    while (!done_) {
        const auto seen = steps_;
        changed_.wait_for(lock, patience_, [this] { return done_; });
        if (done_ || steps_ != seen) continue;
        std::fprintf(stderr, "watchdog: stuck in: %s\n%s", step_.c_str(), platform::blockedThreads().c_str());
        std::abort();
    }
}

}  // namespace mvrtpfec
