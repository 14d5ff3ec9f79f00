#pragma once

#include <functional>
#include <memory>

#include "platform/threads/sync.h"

namespace mvn {

/// A worker thread that runs one callable. It is created suspended, so that its owner can finish wiring its
/// own state, and has a stack of 64 KiB.
///
/// The destructor waits for nothing. So the owner makes the callable return and waits for the handle first,
/// or keeps what the callable touches alive; the callable is the started thread's own and goes when it
/// returns, so from Start on the Thread itself isn't needed any more. An exception that escapes the callable,
/// or an empty callable, ends the process.
class Thread {
public:
    /// Copies the callable. A thread that can't be created leaves a null handle, on which Start and the
    /// destructor do nothing.
    explicit Thread(const std::function<void()>& callable);
    virtual ~Thread();

    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Lets the thread run. Once.
    void Start() noexcept;

    /// Signalled when the thread has ended.
    HANDLE Handle() const noexcept { return handle_; }
    /// The system's number for the thread; 0 when it couldn't be created.
    DWORD Id() const noexcept { return id_; }

private:
    using Callable = std::function<void()>;

    static DWORD WINAPI ThreadProc(LPVOID callable) noexcept;

    std::unique_ptr<Callable> callable_;  ///< until Start
    DWORD id_ = 0;                        ///< before the handle, with which it is written
    HANDLE handle_;
};

}  // namespace mvn
