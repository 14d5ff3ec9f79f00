#pragma once

#include "platform/threads/turn_taking.h"

namespace mvrtpfec {

/// A re-entrant lock.
class CCritSec {
public:
    CCritSec() noexcept { InitializeCriticalSection(&section_); }
    ~CCritSec() { DeleteCriticalSection(&section_); }

    CCritSec(const CCritSec&) = delete;
    CCritSec& operator=(const CCritSec&) = delete;

    void Lock() noexcept { turns_.enter(section_); }
    void Unlock() noexcept { LeaveCriticalSection(&section_); }

private:
    CRITICAL_SECTION section_;
    platform::TurnTaking turns_;
};

/// Holds any lock with Lock() and Unlock() while it lives.
template <class Lockable = CCritSec>
class CAutoLock {
public:
    explicit CAutoLock(Lockable* lock) noexcept : lock_(lock) { lock_->Lock(); }
    ~CAutoLock() { lock_->Unlock(); }

    CAutoLock(const CAutoLock&) = delete;
    CAutoLock& operator=(const CAutoLock&) = delete;

private:
    Lockable* lock_;
};

}  // namespace mvrtpfec
