#include "platform/threads/wait_object-posix.h"

namespace platform {

namespace {
constinit std::mutex freezingMutex;
}

std::mutex& WaitObject::freezing() noexcept {
    return freezingMutex;
}

WaitObject* WaitObject::of(HANDLE handle) noexcept {
    if (handle == nullptr) SetLastError(ERROR_INVALID_HANDLE);
    return static_cast<WaitObject*>(handle);
}

WaitObject* WaitObject::of(HANDLE handle, Kind kind) noexcept {
    WaitObject* object = of(handle);
    if (object == nullptr || object->kind_ == kind) return object;
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

void WaitObject::release() noexcept {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) > 1) return;
    delete this;  // NOLINT(cppcoreguidelines-owning-memory)
}

WaitObject::State WaitObject::settledState() const noexcept {
    State state = state_.load(std::memory_order_acquire);
    while ((state & frozen) != 0) {
        const std::lock_guard thawed(freezingMutex);
        state = state_.load(std::memory_order_acquire);
    }
    return state;
}

/// Also for an equal count: who takes the object sees what was done before each signalling.
bool WaitObject::replace(State& seen, Count count) noexcept {
    return state_.compare_exchange_weak(seen, withCount(seen, count), std::memory_order_acq_rel,
                                        std::memory_order_acquire);
}

bool WaitObject::tryTake() noexcept {
    if (takes_ == 0) return isSignalled();
    for (;;) {
        State seen = settledState();
        if (countOf(seen) == 0) return false;
        if (replace(seen, countOf(seen) - takes_)) return true;
    }
}

void WaitObject::enrol(Waiter& waiter) noexcept {
    addReference();
    const std::lock_guard lock(mutex_);
    waiter.previous = last_;
    (last_ != nullptr ? last_->next : first_) = &waiter;
    last_ = &waiter;
    state_.fetch_or(waitedFor, std::memory_order_acq_rel);
}

void WaitObject::leave(Waiter& waiter) noexcept {
    {
        const std::lock_guard lock(mutex_);
        (waiter.previous != nullptr ? waiter.previous->next : first_) = waiter.next;
        (waiter.next != nullptr ? waiter.next->previous : last_) = waiter.previous;
        if (first_ == nullptr) state_.fetch_and(~waitedFor, std::memory_order_acq_rel);
        tellFirst();
    }
    release();
}

void WaitObject::tellWaiters() noexcept {
    const std::lock_guard lock(mutex_);
    tellFirst();
}

/// As many as the count can serve, and in between those whom it alone may not serve. Under the lock, so that
/// none of them leaves before it is told.
void WaitObject::tellFirst() const noexcept {
    const Count count = countOf(state_.load(std::memory_order_acquire));
    if (count == 0) return;
    Count left = takes_ == 0 ? std::numeric_limits<Count>::max() : count;
    for (const Waiter* waiter = first_; waiter != nullptr && left > 0; waiter = waiter->next) {
        waiter->parker->tell();
        if (waiter->takesAlone) --left;
    }
}

}  // namespace platform

BOOL CloseHandle(HANDLE handle) {
    platform::WaitObject* object = platform::WaitObject::of(handle);
    if (object == nullptr) return FALSE;
    object->closing();
    object->release();
    return TRUE;
}
