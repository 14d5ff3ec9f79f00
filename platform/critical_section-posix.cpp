#include "platform/blocked_note-posix.h"
#include "platform/lock_order-posix.h"

namespace platform {
namespace {

bool isInside(const CRITICAL_SECTION& section) noexcept {
    return section.owner.load(std::memory_order_relaxed) == GetCurrentThreadId();
}

void noteEntered(CRITICAL_SECTION& section) noexcept {
    section.owner.store(GetCurrentThreadId(), std::memory_order_relaxed);
    section.depth = 1;
}

[[gnu::noinline]] void waitAndLock(CRITICAL_SECTION& section) noexcept {
    const BlockedNote note(&section, section.owner.load(std::memory_order_relaxed));
    section.mutex.lock();
}

}  // namespace
}  // namespace platform

void InitializeCriticalSection(CRITICAL_SECTION* section) {
    platform::noteLockMade(section);
}

BOOL InitializeCriticalSectionAndSpinCount(CRITICAL_SECTION* section, DWORD) {
    platform::noteLockMade(section);
    return TRUE;
}

void DeleteCriticalSection(CRITICAL_SECTION* section) {
    platform::noteLockGone(section);
}

void EnterCriticalSection(CRITICAL_SECTION* section) {
    if (platform::isInside(*section)) {
        ++section->depth;
        return;
    }
    platform::noteLocking(section);
    if (!section->mutex.try_lock()) platform::waitAndLock(*section);
    platform::noteLocked(section);
    platform::noteEntered(*section);
}

BOOL TryEnterCriticalSection(CRITICAL_SECTION* section) {
    if (platform::isInside(*section)) {
        ++section->depth;
        return TRUE;
    }
    if (!section->mutex.try_lock()) return FALSE;
    platform::noteLockedByTry(section);
    platform::noteEntered(*section);
    return TRUE;
}

void LeaveCriticalSection(CRITICAL_SECTION* section) {
    if (--section->depth > 0) return;
    section->owner.store(0, std::memory_order_relaxed);
    platform::noteUnlocking(section);
    section->mutex.unlock();
    platform::noteUnlocked(section);
}
