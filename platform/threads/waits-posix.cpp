#include <algorithm>
#include <array>
#include <span>

#include "platform/threads/blocked_note-posix.h"
#include "platform/threads/wait_object-posix.h"

namespace platform {
namespace {

using Objects = std::span<WaitObject* const>;

DWORD takeAny(Objects objects) noexcept {
    const auto taken = std::ranges::find_if(objects, [](WaitObject* object) { return object->tryTake(); });
    if (taken == objects.end()) return WAIT_TIMEOUT;
    return WAIT_OBJECT_0 + static_cast<DWORD>(taken - objects.begin());
}

bool areSignalled(Objects objects) noexcept {
    return std::ranges::all_of(objects, [](const WaitObject* object) { return object->isSignalled(); });
}

DWORD takeAll(Objects objects) noexcept {
    if (!areSignalled(objects)) return WAIT_TIMEOUT;
    const std::lock_guard lock(WaitObject::freezing());
    for (WaitObject* object : objects) object->freeze();
    const bool taken = areSignalled(objects);
    for (WaitObject* object : objects) taken ? object->takeAndThaw() : object->thaw();
    return taken ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

/// One wait of the calling thread.
class Wait {
public:
    /// `all` matters for several objects only.
    Wait(Objects objects, bool all) noexcept : objects_(objects), all_(all && objects.size() > 1) {}

    DWORD run(DWORD milliseconds) noexcept {
        const DWORD result = tryTake();
        return result != WAIT_TIMEOUT || milliseconds == 0 ? result : sleep(Deadline(milliseconds));
    }

private:
    DWORD tryTake() noexcept { return all_ ? takeAll(objects_) : takeAny(objects_); }

    [[gnu::noinline]] DWORD sleep(const Deadline& deadline) noexcept {
        Parker parker;
        std::array<Waiter, MAXIMUM_WAIT_OBJECTS> waiters;
        const BlockedNote note(objects_.front(), objects_.size());
        for (std::size_t i = 0; i < objects_.size(); ++i) {
            waiters[i] = {.parker = &parker, .takesAlone = !all_};
            objects_[i]->enrol(waiters[i]);
        }
        const DWORD result = tryUntil(parker, deadline);
        for (std::size_t i = 0; i < objects_.size(); ++i) objects_[i]->leave(waiters[i]);
        return result;
    }

    /// Tries once more when the time is over.
    DWORD tryUntil(Parker& parker, const Deadline& deadline) noexcept {
        DWORD result = tryTake();
        for (bool inTime = true; result == WAIT_TIMEOUT && inTime; result = tryTake())
            inTime = parker.park(deadline);
        return result;
    }

    Objects objects_;
    bool all_;
};

bool hasRepetition(Objects objects) noexcept {
    for (; !objects.empty(); objects = objects.subspan(1))
        if (std::ranges::count(objects, objects.front()) > 1) return true;
    return false;
}

DWORD refuse(DWORD error) noexcept {
    SetLastError(error);
    return WAIT_FAILED;
}

}  // namespace
}  // namespace platform

using platform::WaitObject;

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
    WaitObject* const object = WaitObject::of(handle);
    return object == nullptr ? WAIT_FAILED : platform::Wait({&object, 1}, false).run(milliseconds);
}

DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL waitAll, DWORD milliseconds) {
    if (count == 0 || count > MAXIMUM_WAIT_OBJECTS || handles == nullptr)
        return platform::refuse(ERROR_INVALID_PARAMETER);
    std::array<WaitObject*, MAXIMUM_WAIT_OBJECTS> storage;
    const std::span objects(storage.data(), count);
    for (DWORD i = 0; i < count; ++i)
        if ((objects[i] = WaitObject::of(handles[i])) == nullptr) return WAIT_FAILED;
    if (waitAll != FALSE && platform::hasRepetition(objects))
        return platform::refuse(ERROR_INVALID_PARAMETER);
    return platform::Wait(objects, waitAll != FALSE).run(milliseconds);
}
