#include "platform/threads/turn_taking.h"

namespace platform {

namespace {

bool isMine(const CRITICAL_SECTION& section) noexcept {
    return reinterpret_cast<ULONG_PTR>(section.OwningThread) == GetCurrentThreadId();
}

}  // namespace

void TurnTaking::enter(CRITICAL_SECTION& section) noexcept {
    if ((waiting_ == 0 || isMine(section)) && TryEnterCriticalSection(&section)) return;
    ++waiting_;
    EnterCriticalSection(&door_);
    EnterCriticalSection(&section);
    --waiting_;
    LeaveCriticalSection(&door_);
}

}  // namespace platform
