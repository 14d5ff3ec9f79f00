#include "platform/threads/turn_taking.h"

namespace platform {

// Not strictly fair either, but what a waiter loses here is a few turns.
void TurnTaking::enter(CRITICAL_SECTION& section) noexcept {
    EnterCriticalSection(&section);
}

}  // namespace platform
