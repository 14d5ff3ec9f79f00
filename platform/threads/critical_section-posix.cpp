#include "platform/threads/blocked_note-posix.h"
#include "platform/threads/sanitizers-posix.h"

namespace platform {
namespace {

/// The thread sanitizer learns the order of locks from unconditional locking only.
bool enterAtOnce(CRITICAL_SECTION& section) noexcept {
    return !underThreadSanitizer && section.mutex.try_lock();
}

[[gnu::noinline]] void waitAndEnter(CRITICAL_SECTION& section) {
    const BlockedNote note(&section, section.owner.load(std::memory_order_relaxed));
    section.mutex.lock();
}

void noteOwner(CRITICAL_SECTION& section) noexcept {
    section.owner.store(GetCurrentThreadId(), std::memory_order_relaxed);
}

}  // namespace
}  // namespace platform

// The structure's members have made themselves.
void InitializeCriticalSection(CRITICAL_SECTION*) {}

BOOL InitializeCriticalSectionAndSpinCount(CRITICAL_SECTION*, DWORD) {
    return TRUE;
}

void DeleteCriticalSection(CRITICAL_SECTION*) {}

void EnterCriticalSection(CRITICAL_SECTION* section) {
    if (!platform::enterAtOnce(*section)) platform::waitAndEnter(*section);
    platform::noteOwner(*section);
}

BOOL TryEnterCriticalSection(CRITICAL_SECTION* section) {
    if (!section->mutex.try_lock()) return FALSE;
    platform::noteOwner(*section);
    return TRUE;
}

void LeaveCriticalSection(CRITICAL_SECTION* section) {
    section->mutex.unlock();
}
