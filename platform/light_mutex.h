#pragma once

#include <atomic>
#include <cstdint>

namespace platform {

/// A mutex for sections of a few instructions on the road of every sample: two atomic operations in line when
/// nobody else is there, where the standard one costs two calls more. Not for longer sections: who holds it
/// most of the time can keep others out. Not re-entrant; for std::lock_guard.
///
/// Its next holder may destroy it: after opening, unlock() wakes an address and reads nothing.
class LightMutex {
public:
    constexpr LightMutex() noexcept = default;

    LightMutex(const LightMutex&) = delete;
    LightMutex& operator=(const LightMutex&) = delete;

    void lock() noexcept {
        if (!try_lock()) lockContended();
    }
    bool try_lock() noexcept {
        State expected = open;
        return state_.compare_exchange_strong(expected, locked, std::memory_order_acquire,
                                              std::memory_order_relaxed);
    }
    void unlock() noexcept {
        if (state_.exchange(open, std::memory_order_release) == lockedWithWaiters) state_.notify_one();
    }

private:
    using State = std::uint32_t;
    static constexpr State open = 0;
    static constexpr State locked = 1;
    static constexpr State lockedWithWaiters = 2;

    /// The holder is about to leave as a rule.
    [[gnu::noinline]] void lockContended() noexcept {
        for (int look = 0; look < 200; ++look)
            if (state_.load(std::memory_order_relaxed) == open && try_lock()) return;
        while (state_.exchange(lockedWithWaiters, std::memory_order_acquire) != open)
            state_.wait(lockedWithWaiters, std::memory_order_relaxed);
    }

    std::atomic<State> state_{open};
};

}  // namespace platform
