#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace mvrtpfec {

/// Ends the process when the test has stood still too long, after saying who waits for which lock.
class Watchdog {
public:
    explicit Watchdog(std::chrono::seconds patience);
    ~Watchdog();

    /// Called by the thread that must get on, with what it is about to do.
    void alive(const char* step);

private:
    void watch();

    std::chrono::seconds patience_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::string step_ = "start";
    unsigned long long steps_ = 0;
    bool done_ = false;
    std::thread thread_;
};

}  // namespace mvrtpfec
