#pragma once

#include <functional>

#include "platform/threads/sync.h"

namespace mvn {

/// A worker thread that runs one callable. It is created suspended, so that its owner can finish wiring its
/// own state, and has a stack of 64 KiB.
///
/// The destructor waits for nothing. So the owner makes the callable return and waits for the handle first,
/// or keeps what the callable touches alive; the thread runs a copy of the callable, so once that runs, the
/// Thread itself isn't needed any more. An exception that escapes the callable, or an empty callable, ends
/// the process.
class Thread {
public:
    /// Copies the callable. A thread that can't be created leaves a null handle, on which Start and the
    /// destructor do nothing. `this` must stay where it is.
    explicit Thread(const std::function<void()>& callable);
    virtual ~Thread();

    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Lets the thread run. Once.
    void Start() noexcept;

    /// Signalled when the thread has ended.
    HANDLE Handle() const noexcept { return handle_; }

private:
    static DWORD WINAPI ThreadProc(LPVOID thread) noexcept;

    std::function<void()> callable_;
    HANDLE handle_;
    DWORD id_ = 0;
};

}  // namespace mvn
