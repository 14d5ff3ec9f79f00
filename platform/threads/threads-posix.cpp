#include <algorithm>
#include <climits>

#include <pthread.h>
#include <unistd.h>

#include "platform/threads/new_handle-posix.h"
#include "platform/threads/sanitizers-posix.h"
#include "platform/threads/thread_id-posix.h"

namespace platform {
namespace {

/// What the frames and the runtime of an instrumented build need beyond a thread's own stack.
constexpr std::size_t stackAllowance = underThreadSanitizer || underAddressSanitizer ? 1024 * 1024 : 0;

std::size_t roundedUp(std::size_t size) noexcept {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return (size + page - 1) / page * page;
}

/// 0 asks for the system's default.
class ThreadAttributes {
public:
    explicit ThreadAttributes(std::size_t stackSize) noexcept {
        pthread_attr_init(&attributes_);
        if (stackSize == 0) return;
        const auto least = static_cast<std::size_t>(PTHREAD_STACK_MIN);
        error_ =
            pthread_attr_setstacksize(&attributes_, roundedUp(std::max(stackSize, least)) + stackAllowance);
    }
    ~ThreadAttributes() { pthread_attr_destroy(&attributes_); }

    ThreadAttributes(const ThreadAttributes&) = delete;
    ThreadAttributes& operator=(const ThreadAttributes&) = delete;

    bool start(pthread_t& thread, void* (*entry)(void*), void* argument) const noexcept {
        return error_ == 0 && pthread_create(&thread, &attributes_, entry, argument) == 0;
    }

private:
    pthread_attr_t attributes_{};
    int error_ = 0;
};

/// A thread; its count is 1 when it has ended. It waits at its gate before it runs anything. The running
/// thread holds a reference of its own.
class Thread final : public WaitObject {
public:
    Thread(LPTHREAD_START_ROUTINE routine, LPVOID parameter, bool suspended) noexcept
        : WaitObject(Kind::thread, Taking::keepsCount, 0),
          routine_(routine),
          parameter_(parameter),
          gate_(suspended ? Gate::closed : Gate::open) {}

    bool start(std::size_t stackSize) noexcept {
        addReference();
        if (ThreadAttributes(stackSize).start(thread_, &Thread::enter, this)) return true;
        release();
        return false;
    }

    /// Whether it was suspended.
    bool resume() noexcept { return leadOn(Gate::open); }

    /// Joins a thread that has nothing left to run, so that nothing of it outlives its handle.
    void closing() noexcept override {
        const bool isEnding = leadOn(Gate::away) || isSignalled();
        if (!isEnding || pthread_join(thread_, nullptr) != 0) pthread_detach(thread_);
    }

    DWORD id() const noexcept { return id_; }

private:
    enum class Gate { closed, open, away };

    bool leadOn(Gate where) noexcept {
        Gate gate = Gate::closed;
        if (!gate_.compare_exchange_strong(gate, where, std::memory_order_acq_rel)) return false;
        atGate_.tell();
        return true;
    }

    Gate waitAtGate() noexcept {
        const Deadline never(INFINITE);
        while (gate_.load(std::memory_order_acquire) == Gate::closed) atGate_.park(never);
        return gate_.load(std::memory_order_acquire);
    }

    /// An exception ends the process here.
    static void* enter(void* argument) noexcept {
        auto* thread = static_cast<Thread*>(argument);
        setThreadId(thread->id_);
        if (thread->waitAtGate() == Gate::open) thread->routine_(thread->parameter_);
        thread->change([](Count) { return std::optional<Count>(1); });
        thread->release();
        return nullptr;
    }

    const LPTHREAD_START_ROUTINE routine_;
    const LPVOID parameter_;
    const DWORD id_ = newThreadId();
    pthread_t thread_{};
    std::atomic<Gate> gate_;
    Parker atGate_;
};

}  // namespace
}  // namespace platform

using platform::Thread;
using platform::WaitObject;

HANDLE CreateThread(SECURITY_ATTRIBUTES*, std::size_t stackSize, LPTHREAD_START_ROUTINE start,
                    LPVOID parameter, DWORD flags, DWORD* threadId) {
    auto* thread = platform::newHandle<Thread>(start, parameter, (flags & CREATE_SUSPENDED) != 0);
    if (thread == nullptr) return nullptr;
    const DWORD id = thread->id();
    if (!thread->start(stackSize)) {
        thread->release();
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    if (threadId != nullptr) *threadId = id;
    return thread;
}

DWORD ResumeThread(HANDLE handle) {
    auto* thread = static_cast<Thread*>(WaitObject::of(handle, WaitObject::Kind::thread));
    if (thread == nullptr) return 0xFFFFFFFF;
    return thread->resume() ? 1 : 0;
}
