#include "platform/threads/new_handle-posix.h"

namespace platform {
namespace {

class Semaphore final : public WaitObject {
public:
    Semaphore(Count count, Count maximum) noexcept
        : WaitObject(Kind::semaphore, Taking::takesOne, count), maximum_(maximum) {}

    /// False when the maximum would be passed.
    bool add(Count units, Count& previous) noexcept {
        return change([&, maximum = maximum_](Count count) -> std::optional<Count> {
            if (units > maximum - count) return std::nullopt;
            previous = count;
            return count + units;
        });
    }

private:
    const Count maximum_;
};

}  // namespace
}  // namespace platform

using platform::Semaphore;
using platform::WaitObject;

HANDLE CreateSemaphoreW(SECURITY_ATTRIBUTES*, LONG initialCount, LONG maximumCount, LPCWSTR name) {
    if (maximumCount <= 0 || initialCount < 0 || initialCount > maximumCount || name != nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return platform::newHandle<Semaphore>(static_cast<WaitObject::Count>(initialCount),
                                          static_cast<WaitObject::Count>(maximumCount));
}

BOOL ReleaseSemaphore(HANDLE handle, LONG releaseCount, LONG* previousCount) {
    auto* semaphore = static_cast<Semaphore*>(WaitObject::of(handle, WaitObject::Kind::semaphore));
    if (semaphore == nullptr) return FALSE;
    if (releaseCount <= 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    WaitObject::Count previous = 0;
    if (!semaphore->add(static_cast<WaitObject::Count>(releaseCount), previous)) {
        SetLastError(ERROR_TOO_MANY_POSTS);
        return FALSE;
    }
    if (previousCount != nullptr) *previousCount = static_cast<LONG>(previous);
    return TRUE;
}
