#pragma once

#include "platform/component/component.h"
#include "platform/module/module_system.h"

namespace mvrtpfec {

/// The module as a server of its classes: what its exported entry points do. Any thread, but for attach and
/// detach, which the system calls when it loads and unloads the module.
class ModuleServer {
public:
    static void attach(platform::ModuleHandle instance) noexcept;
    static void detach() noexcept;

    /// IID_IUnknown or IID_IClassFactory of one of the table's classes: E_NOINTERFACE,
    /// CLASS_E_CLASSNOTAVAILABLE, E_POINTER, E_OUTOFMEMORY.
    static HRESULT getClassObject(REFCLSID classId, REFIID riid, void** object) noexcept;
    /// S_FALSE while the server is locked or a framework object is alive.
    static HRESULT canUnloadNow() noexcept;
    static HRESULT registerServer() noexcept;
    static HRESULT unregisterServer() noexcept;

    static void lock(bool on) noexcept;

    static platform::ModuleHandle instance() noexcept;
    /// The kind of system; 1 where it doesn't tell.
    static DWORD systemPlatform() noexcept;
};

}  // namespace mvrtpfec
