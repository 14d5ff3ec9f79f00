#include "platform/threads/new_handle-posix.h"

namespace platform {
namespace {

class Event final : public WaitObject {
public:
    Event(bool manualReset, bool set) noexcept
        : WaitObject(Kind::event, manualReset ? Taking::keepsCount : Taking::takesOne, set ? 1 : 0) {}
};

BOOL setCount(HANDLE handle, WaitObject::Count count) noexcept {
    WaitObject* event = WaitObject::of(handle, WaitObject::Kind::event);
    if (event == nullptr) return FALSE;
    event->change([=](WaitObject::Count) { return std::optional(count); });
    return TRUE;
}

}  // namespace
}  // namespace platform

HANDLE CreateEventW(SECURITY_ATTRIBUTES*, BOOL manualReset, BOOL initialState, LPCWSTR name) {
    if (name != nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return platform::newHandle<platform::Event>(manualReset != FALSE, initialState != FALSE);
}

BOOL SetEvent(HANDLE event) {
    return platform::setCount(event, 1);
}

BOOL ResetEvent(HANDLE event) {
    return platform::setCount(event, 0);
}
