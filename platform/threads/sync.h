#pragma once
// Events, semaphores, waits, threads and critical sections: the system's own on Windows. Elsewhere a layer
// of ours with the same names, values and behaviour; a thread that waits sleeps until an object it waits
// for is signalled and never polls, and what is signalled already, or has nobody waiting, costs no system
// call.

#include "platform/hresult.h"

#ifndef _WIN32

#include <atomic>
#include <cstddef>
#include <mutex>

struct SECURITY_ATTRIBUTES;

constexpr DWORD INFINITE = 0xFFFFFFFF;
constexpr DWORD WAIT_OBJECT_0 = 0;
constexpr DWORD WAIT_TIMEOUT = 258;
constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;
constexpr DWORD CREATE_SUSPENDED = 4;

constexpr DWORD ERROR_SUCCESS = 0;
constexpr DWORD ERROR_INVALID_HANDLE = 6;
constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
constexpr DWORD ERROR_INVALID_PARAMETER = 87;
constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
constexpr DWORD ERROR_TOO_MANY_POSTS = 298;

using LPTHREAD_START_ROUTINE = DWORD(WINAPI*)(LPVOID);

/// Re-entrant. The standard mutex, because filters hold such a lock while downstream works, and who waits for
/// it must get its turn.
struct CRITICAL_SECTION {
    std::recursive_mutex mutex;
    std::atomic<DWORD> owner{0};  ///< the thread that took it last
};

// The operations have C linkage as the system's own have, so that tests can stand in for them.
extern "C" {

DWORD GetLastError();
void SetLastError(DWORD error);

/// Null (last error ERROR_NOT_ENOUGH_MEMORY or ERROR_INVALID_PARAMETER) when it can't be made. Objects have
/// no names here: `name` must be null.
HANDLE CreateEventW(SECURITY_ATTRIBUTES* attributes, BOOL manualReset, BOOL initialState, LPCWSTR name);
BOOL SetEvent(HANDLE event);
BOOL ResetEvent(HANDLE event);

/// Null unless 0 <= initialCount <= maximumCount and maximumCount > 0.
HANDLE CreateSemaphoreW(SECURITY_ATTRIBUTES* attributes, LONG initialCount, LONG maximumCount, LPCWSTR name);
/// False, the count untouched and ERROR_TOO_MANY_POSTS, when the maximum would be passed.
BOOL ReleaseSemaphore(HANDLE semaphore, LONG releaseCount, LONG* previousCount);

/// The thread's stack is `stackSize` bytes, rounded up to what the system needs at least. A thread handle is
/// signalled when the thread has ended; a suspended thread that is never resumed runs nothing.
HANDLE CreateThread(SECURITY_ATTRIBUTES* attributes, std::size_t stackSize, LPTHREAD_START_ROUTINE start,
                    LPVOID parameter, DWORD flags, DWORD* threadId);
/// The previous suspend count (1 or 0), 0xFFFFFFFF for what is no thread.
DWORD ResumeThread(HANDLE thread);
/// Never 0, and never another thread's, even when that one has ended.
DWORD GetCurrentThreadId();

/// WAIT_OBJECT_0, WAIT_TIMEOUT, or WAIT_FAILED with ERROR_INVALID_HANDLE for a null handle. 0 milliseconds
/// only try.
DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);
/// As WaitForSingleObject, with WAIT_OBJECT_0 plus the lowest index that is signalled (any), or WAIT_OBJECT_0
/// (all, taken together). ERROR_INVALID_PARAMETER for a count that isn't 1 to MAXIMUM_WAIT_OBJECTS, for no
/// array, and for an object that stands twice among all.
DWORD WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL waitAll, DWORD milliseconds);
/// A null handle gives FALSE and ERROR_INVALID_HANDLE. A thread goes on without its handle; one that was
/// never resumed, or has ended, is gone when this returns.
BOOL CloseHandle(HANDLE object);

void InitializeCriticalSection(CRITICAL_SECTION* section);
BOOL InitializeCriticalSectionAndSpinCount(CRITICAL_SECTION* section, DWORD spinCount);
void DeleteCriticalSection(CRITICAL_SECTION* section);
void EnterCriticalSection(CRITICAL_SECTION* section);
BOOL TryEnterCriticalSection(CRITICAL_SECTION* section);
void LeaveCriticalSection(CRITICAL_SECTION* section);

/// Milliseconds of a steady clock, modulo 2^32.
DWORD GetTickCount();
void Sleep(DWORD milliseconds);

}  // extern "C"

#endif
