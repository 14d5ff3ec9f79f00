#pragma once

#include <atomic>
#include <cstdint>

#include "platform/types.h"

namespace platform {

/// Wakes threads that found nothing to do. A sleeper reads the count, looks once more, and sleeps until the
/// count has moved on, so that no wake-up between the two is lost. Needs no memory; waking no one costs no
/// system call.
class WakeCount {
public:
    WakeCount() noexcept = default;
    WakeCount(const WakeCount&) = delete;
    WakeCount& operator=(const WakeCount&) = delete;

#ifdef _WIN32

    // Not of std::atomic's waits, which lose wake-ups where the runtime makes them of condition variables.
    std::uint32_t seen() noexcept {
        AcquireSRWLockShared(&lock_);
        const std::uint32_t count = count_;
        ReleaseSRWLockShared(&lock_);
        return count;
    }
    void wakeOne() noexcept {
        advance();
        WakeConditionVariable(&moved_);
    }
    void wakeAll() noexcept {
        advance();
        WakeAllConditionVariable(&moved_);
    }
    void waitPast(std::uint32_t count) noexcept {
        AcquireSRWLockExclusive(&lock_);
        while (count_ == count) SleepConditionVariableSRW(&moved_, &lock_, INFINITE, 0);
        ReleaseSRWLockExclusive(&lock_);
    }

private:
    void advance() noexcept {
        AcquireSRWLockExclusive(&lock_);
        ++count_;
        ReleaseSRWLockExclusive(&lock_);
    }

    SRWLOCK lock_ = SRWLOCK_INIT;
    CONDITION_VARIABLE moved_ = CONDITION_VARIABLE_INIT;
    std::uint32_t count_ = 0;

#else

    std::uint32_t seen() const noexcept {
        return count_;
    }
    void wakeOne() noexcept {
        ++count_;
        count_.notify_one();
    }
    void wakeAll() noexcept {
        ++count_;
        count_.notify_all();
    }
    void waitPast(std::uint32_t count) noexcept {
        count_.wait(count);
    }

private:
    std::atomic<std::uint32_t> count_{0};

#endif
};

}  // namespace platform
