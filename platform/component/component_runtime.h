#pragma once

#include "platform/component/component.h"

namespace platform {

/// While one lives, the thread that made it may use the system's components; nothing to do natively. Goes
/// last, when the thread holds no component any more, and on the same thread.
class ComponentRuntime {
public:
    ComponentRuntime() noexcept;
    ~ComponentRuntime();

    ComponentRuntime(const ComponentRuntime&) = delete;
    ComponentRuntime& operator=(const ComponentRuntime&) = delete;

private:
    [[maybe_unused]] bool entered_ = false;
};

/// An object of a class that is registered with the system. REGDB_E_CLASSNOTREG when it isn't, so always
/// where the system has no such registration.
HRESULT createComponent(REFCLSID classId, REFIID riid, void** object) noexcept;

}  // namespace platform
