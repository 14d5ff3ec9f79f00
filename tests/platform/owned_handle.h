#pragma once

#include "platform/threads/sync.h"

namespace platform {

/// Closes what it holds.
class OwnedHandle {
public:
    explicit OwnedHandle(HANDLE handle) : handle_(handle) {}
    ~OwnedHandle() { CloseHandle(handle_); }

    OwnedHandle(const OwnedHandle&) = delete;
    OwnedHandle& operator=(const OwnedHandle&) = delete;

    operator HANDLE() const { return handle_; }

private:
    HANDLE handle_;
};

struct AutoEvent : OwnedHandle {
    explicit AutoEvent(bool set = false) : OwnedHandle(CreateEventW(nullptr, FALSE, set, nullptr)) {}
};

struct ManualEvent : OwnedHandle {
    explicit ManualEvent(bool set = false) : OwnedHandle(CreateEventW(nullptr, TRUE, set, nullptr)) {}
};

struct Semaphore : OwnedHandle {
    explicit Semaphore(LONG count = 0, LONG maximum = 0x7FFFFFFF)
        : OwnedHandle(CreateSemaphoreW(nullptr, count, maximum, nullptr)) {}
};

/// Longer than any wait of a test that gets on.
inline constexpr DWORD patience = 60'000;

inline bool isTaken(HANDLE object, DWORD milliseconds = 0) {
    return WaitForSingleObject(object, milliseconds) == WAIT_OBJECT_0;
}

}  // namespace platform
