#pragma once
// Tells the thread sanitizer about locks that it can't see, since they are made of atomics: it then finds
// threads that take two of them in different orders. Nothing in other builds.

#include "platform/sanitizers-posix.h"

#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

namespace platform {

#ifdef __SANITIZE_THREAD__

inline void noteLockMade(void* lock) {
    __tsan_mutex_create(lock, 0);
}
inline void noteLockGone(void* lock) {
    __tsan_mutex_destroy(lock, 0);
}
inline void noteLocking(void* lock) {
    __tsan_mutex_pre_lock(lock, 0);
}
inline void noteLocked(void* lock) {
    __tsan_mutex_post_lock(lock, 0, 1);
}
inline void noteLockedByTry(void* lock) {
    __tsan_mutex_pre_lock(lock, __tsan_mutex_try_lock);
    __tsan_mutex_post_lock(lock, __tsan_mutex_try_lock, 1);
}
inline void noteUnlocking(void* lock) {
    __tsan_mutex_pre_unlock(lock, 0);
}
inline void noteUnlocked(void* lock) {
    __tsan_mutex_post_unlock(lock, 0);
}

#else

inline void noteLockMade(void*) {}
inline void noteLockGone(void*) {}
inline void noteLocking(void*) {}
inline void noteLocked(void*) {}
inline void noteLockedByTry(void*) {}
inline void noteUnlocking(void*) {}
inline void noteUnlocked(void*) {}

#endif

}  // namespace platform
