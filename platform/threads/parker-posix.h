#pragma once

#include <atomic>
#include <cstdint>
#include <ctime>
#include <optional>

#include "platform/threads/sync.h"

namespace platform {

/// The end of a wait, counted by a steady clock from the moment the object is made.
class Deadline {
public:
    /// INFINITE never comes.
    explicit Deadline(DWORD milliseconds) noexcept;

    /// Null for never.
    const timespec* time() const noexcept { return time_ ? &*time_ : nullptr; }

private:
    std::optional<timespec> time_;
};

/// Where one thread sleeps until others tell it to look again. What a teller did before tell() is seen after
/// park(), whether the telling woke the thread or found it told already.
class Parker {
public:
    Parker() = default;
    Parker(const Parker&) = delete;
    Parker& operator=(const Parker&) = delete;

    /// From any thread. A system call only when the thread isn't told yet.
    void tell() noexcept;

    /// For the one thread that sleeps here: returns true when told, at once if that was before the call, and
    /// false when the deadline came first.
    bool park(const Deadline& deadline) noexcept;

private:
    bool heard() noexcept { return told_.exchange(0, std::memory_order_acq_rel) != 0; }

    std::atomic<std::uint32_t> told_{0};
};

}  // namespace platform
