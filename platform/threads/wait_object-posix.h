#pragma once

#include <atomic>
#include <cstdint>
#include <limits>
#include <mutex>
#include <optional>

#include "platform/threads/parker-posix.h"

namespace platform {

/// A sleeping wait's place among those who wait for one object.
struct Waiter {
    Parker* parker = nullptr;
    /// Takes this object whatever the state of others; one that wants all of several may have to leave it.
    bool takesAlone = true;
    Waiter* previous = nullptr;
    Waiter* next = nullptr;
};

/// What a HANDLE is: something that threads wait for, with a count that is above 0 while it is signalled.
///
/// Count and flags share one atomic word. So a change of the count knows whether anybody waits, and a waiter
/// who has enrolled finds every change that didn't know of it; neither needs a lock, and with nobody waiting
/// a change is one atomic operation. Only enrolling, leaving and telling waiters take the object's lock,
/// which is a leaf.
///
/// Told waiters try to take the object again and may find it taken by a third; none has a claim. One that
/// leaves tells the next when it leaves the object signalled.
///
/// Taking several objects together freezes them: meanwhile their counts don't change, and threads that want
/// to change them wait for the lock that the freezing thread holds.
class WaitObject {
public:
    using Count = std::uint32_t;
    enum class Kind { event, semaphore, thread };
    /// What a successful wait leaves behind.
    enum class Taking { keepsCount, takesOne };

    /// With one reference, the handle's.
    WaitObject(Kind kind, Taking taking, Count count) noexcept
        : state_(count), takes_(taking == Taking::takesOne ? 1 : 0), kind_(kind) {}

    WaitObject(const WaitObject&) = delete;
    WaitObject& operator=(const WaitObject&) = delete;

    /// The object behind a handle; null, and the last error set, for a null handle or one of another kind.
    static WaitObject* of(HANDLE handle) noexcept;
    static WaitObject* of(HANDLE handle, Kind kind) noexcept;

    void addReference() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
    /// The last one destroys the object.
    void release() noexcept;

    /// What closing the handle means beyond giving up its reference.
    virtual void closing() noexcept {}

    bool isSignalled() const noexcept { return countOf(state_.load(std::memory_order_acquire)) > 0; }
    bool tryTake() noexcept;

    /// Sets the count to next(count), which may run several times, and tells who waits; false when next()
    /// gives none. With nobody waiting, the object may be gone when this returns: the new count may have let
    /// another thread close it.
    template <class Next>
    bool change(Next next) noexcept;

    /// A waiter keeps the object alive from enrolling to leaving.
    void enrol(Waiter& waiter) noexcept;
    void leave(Waiter& waiter) noexcept;

    /// The lock of all who freeze.
    static std::mutex& freezing() noexcept;
    void freeze() noexcept { state_.fetch_or(frozen, std::memory_order_acq_rel); }
    void thaw() noexcept { state_.fetch_sub(frozen, std::memory_order_acq_rel); }
    /// Only while it is signalled.
    void takeAndThaw() noexcept { state_.fetch_sub(frozen + takes_, std::memory_order_acq_rel); }

protected:
    virtual ~WaitObject() = default;

private:
    using State = std::uint64_t;
    static constexpr State frozen = State{1} << 32;
    static constexpr State waitedFor = State{1} << 33;

    static Count countOf(State state) noexcept { return static_cast<Count>(state); }
    static State withCount(State state, Count count) noexcept { return state - countOf(state) + count; }

    State settledState() const noexcept;
    bool replace(State& seen, Count count) noexcept;
    void tellWaiters() noexcept;
    void tellFirst() const noexcept;

    std::atomic<State> state_;
    const Count takes_;
    const Kind kind_;
    std::atomic<std::uint32_t> references_{1};
    std::mutex mutex_;
    Waiter* first_ = nullptr;
    Waiter* last_ = nullptr;
};

/// Keeps an object alive for a while.
class ObjectReference {
public:
    explicit ObjectReference(WaitObject& object) noexcept : object_(object) { object_.addReference(); }
    ~ObjectReference() { object_.release(); }

    ObjectReference(const ObjectReference&) = delete;
    ObjectReference& operator=(const ObjectReference&) = delete;

private:
    WaitObject& object_;
};

template <class Next>
bool WaitObject::change(Next next) noexcept {
    for (;;) {
        State seen = settledState();
        const std::optional<Count> count = next(countOf(seen));
        if (!count) return false;
        if ((seen & waitedFor) == 0) {
            if (replace(seen, *count)) return true;
            continue;
        }
        const ObjectReference alive(*this);
        if (!replace(seen, *count)) continue;
        tellWaiters();
        return true;
    }
}

}  // namespace platform
