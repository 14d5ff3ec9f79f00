#include "platform/threads/parker-posix.h"

#include <cerrno>
#include <climits>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {
namespace {

constexpr DWORD millisecondsPerSecond = 1000;
constexpr std::int64_t nanosecondsPerMillisecond = 1'000'000;
constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

/// False at the deadline; true when woken, for no reason perhaps, or when the word isn't 0.
bool sleepWhileZero(std::atomic<std::uint32_t>& word, const Deadline& deadline) noexcept {
    // Unlike the plain wait, this one takes an absolute time of the steady clock.
    const auto result = syscall(SYS_futex, &word, FUTEX_WAIT_BITSET_PRIVATE, 0, deadline.time(), nullptr,
                                FUTEX_BITSET_MATCH_ANY);
    return result == 0 || errno != ETIMEDOUT;
}

}  // namespace

Deadline::Deadline(DWORD milliseconds) noexcept {
    if (milliseconds == INFINITE) return;
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    const std::int64_t nanoseconds =
        time.tv_nsec + milliseconds % millisecondsPerSecond * nanosecondsPerMillisecond;
    time.tv_sec += milliseconds / millisecondsPerSecond + nanoseconds / nanosecondsPerSecond;
    time.tv_nsec = nanoseconds % nanosecondsPerSecond;
    time_ = time;
}

void Parker::tell() noexcept {
    if (told_.exchange(1, std::memory_order_acq_rel) != 0) return;
    syscall(SYS_futex, &told_, FUTEX_WAKE_PRIVATE, 1);
}

bool Parker::park(const Deadline& deadline) noexcept {
    while (!heard())
        if (!sleepWhileZero(told_, deadline)) return heard();
    return true;
}

}  // namespace platform
