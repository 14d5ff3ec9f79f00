#pragma once

#include <atomic>

#include "platform/threads/sync.h"

namespace platform {

/// What stands before a critical section so that threads that wait for it get their turn. Windows' own let a
/// thread that leaves and comes right back overtake the one that it woke, time and again: a streaming
/// thread could keep a state change out for as long as it streams.
class TurnTaking {
public:
    TurnTaking() noexcept { InitializeCriticalSection(&door_); }
    ~TurnTaking() { DeleteCriticalSection(&door_); }

    TurnTaking(const TurnTaking&) = delete;
    TurnTaking& operator=(const TurnTaking&) = delete;

    /// EnterCriticalSection. Always the same section.
    void enter(CRITICAL_SECTION& section) noexcept;

private:
    CRITICAL_SECTION door_;  ///< of those that found the section taken, one waits for it, holding this
    std::atomic<int> waiting_{0};
};

}  // namespace platform
