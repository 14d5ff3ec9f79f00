#pragma once

#include <span>

#include "platform/component/component.h"
#include "platform/module/module_system.h"

namespace platform {

/// An open registry key; null stands for HKEY_CLASSES_ROOT.
using RegistryKey = void*;

/// What a module's registration asks of the system. Names and results are those of the system's functions of
/// about the same name: error codes of the Win32 kind (0 is success), HRESULTs, text in the ANSI code page.
class RegistrationSystem {
public:
    virtual ~RegistrationSystem() = default;

    virtual DWORD moduleFileName(ModuleHandle module, std::span<char> path) = 0;
    virtual DWORD lastError() = 0;

    /// Opens the key, which it makes when there is none.
    virtual DWORD createKey(RegistryKey parent, const char* name, RegistryKey* key) = 0;
    virtual DWORD openKey(RegistryKey parent, const char* name, RegistryKey* key) = 0;
    /// Sets a text; a null name is the key's default value.
    virtual DWORD setValue(RegistryKey key, const char* name, const char* text) = 0;
    /// Writes the name of the subkey at a position.
    virtual DWORD enumerateKey(RegistryKey key, DWORD index, std::span<char> name) = 0;
    /// Only a key without subkeys can be deleted.
    virtual DWORD deleteKey(RegistryKey parent, const char* name) = 0;
    virtual void closeKey(RegistryKey key) = 0;

    virtual HRESULT initialize() = 0;
    virtual void uninitialize() = 0;
    virtual void freeUnusedLibraries() = 0;
    virtual HRESULT createInstance(REFCLSID classId, REFIID riid, void** object) = 0;
};

/// The system's own registry and components; natively a registry and a list of filters in this module's
/// memory. One thread at a time.
RegistrationSystem& registrationSystem() noexcept;

}  // namespace platform
