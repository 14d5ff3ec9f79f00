#pragma once

#include <chrono>
#include <thread>

namespace mvrtpfec {

/// Waits for what another thread is about to do; false when it doesn't.
template <class Condition>
bool soon(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace mvrtpfec
