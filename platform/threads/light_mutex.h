#pragma once

#include <atomic>
#include <cstdint>

#include "platform/types.h"

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

#ifdef _WIN32

    // Not of std::atomic's waits, which lose wake-ups where the runtime makes them of condition variables.
    void lock() noexcept {
        AcquireSRWLockExclusive(&lock_);
    }
    bool try_lock() noexcept {
        return TryAcquireSRWLockExclusive(&lock_) != FALSE;
    }
    void unlock() noexcept {
        ReleaseSRWLockExclusive(&lock_);
    }

private:
    SRWLOCK lock_ = SRWLOCK_INIT;

#else

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

#endif
};

}  // namespace platform
