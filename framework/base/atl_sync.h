#pragma once
// The class library's owners of synchronisation objects. Their constructors throw CAtlException when the
// system gives none.

#include "framework/base/atl_exception.h"
#include "platform/threads/turn_taking.h"

namespace mvrtpfec {

/// Owns a handle and closes it.
class CHandle {
public:
    CHandle(const CHandle&) = delete;
    CHandle& operator=(const CHandle&) = delete;

    operator HANDLE() const noexcept { return handle_; }

protected:
    explicit CHandle(HANDLE handle) : handle_(handle) {
        if (handle_ == nullptr) throwLastError();
    }
    ~CHandle() { CloseHandle(handle_); }

private:
    HANDLE handle_;
};

class CEvent : public CHandle {
public:
    CEvent(bool manualReset, bool initialState)
        : CHandle(CreateEventW(nullptr, manualReset, initialState, nullptr)) {}

    void Set() noexcept { SetEvent(*this); }
    void Reset() noexcept { ResetEvent(*this); }
};

class CSemaphore : public CHandle {
public:
    CSemaphore(LONG initialCount, LONG maximumCount)
        : CHandle(CreateSemaphoreW(nullptr, initialCount, maximumCount, nullptr)) {}

    bool Release(LONG count = 1) noexcept { return ReleaseSemaphore(*this, count, nullptr) != FALSE; }
};

/// Re-entrant; to be held by CAutoLock.
class CCriticalSection {
public:
    explicit CCriticalSection(DWORD spinCount = 0) {
        if (!InitializeCriticalSectionAndSpinCount(&section_, spinCount)) throwLastError();
    }
    ~CCriticalSection() { DeleteCriticalSection(&section_); }

    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;

    void Lock() noexcept { turns_.enter(section_); }
    void Unlock() noexcept { LeaveCriticalSection(&section_); }

private:
    CRITICAL_SECTION section_;
    platform::TurnTaking turns_;
};

}  // namespace mvrtpfec
