#include "platform/module/registration_system.h"

namespace platform {

namespace {

HKEY handleOf(RegistryKey key) noexcept {
    return key == nullptr ? HKEY_CLASSES_ROOT : static_cast<HKEY>(key);
}

class SystemRegistration final : public RegistrationSystem {
public:
    DWORD moduleFileName(ModuleHandle module, std::span<char> path) override {
        return platform::moduleFileName(module, path);
    }

    DWORD lastError() override { return GetLastError(); }

    DWORD createKey(RegistryKey parent, const char* name, RegistryKey* key) override {
        HKEY handle = nullptr;
        const LSTATUS status = RegCreateKeyA(handleOf(parent), name, &handle);
        *key = handle;
        return static_cast<DWORD>(status);
    }

    DWORD openKey(RegistryKey parent, const char* name, RegistryKey* key) override {
        HKEY handle = nullptr;
        constexpr REGSAM access = KEY_READ | KEY_WRITE;
        const LSTATUS status = RegOpenKeyExA(handleOf(parent), name, 0, access, &handle);
        *key = handle;
        return static_cast<DWORD>(status);
    }

    DWORD setValue(RegistryKey key, const char* name, const char* text) override {
        const auto size = static_cast<DWORD>(lstrlenA(text)) + 1;
        const auto* bytes = reinterpret_cast<const BYTE*>(text);
        return static_cast<DWORD>(RegSetValueExA(handleOf(key), name, 0, REG_SZ, bytes, size));
    }

    DWORD enumerateKey(RegistryKey key, DWORD index, std::span<char> name) override {
        return static_cast<DWORD>(
            RegEnumKeyA(handleOf(key), index, name.data(), static_cast<DWORD>(name.size())));
    }

    DWORD deleteKey(RegistryKey parent, const char* name) override {
        return static_cast<DWORD>(RegDeleteKeyA(handleOf(parent), name));
    }

    void closeKey(RegistryKey key) override { RegCloseKey(handleOf(key)); }

    HRESULT initialize() override { return CoInitialize(nullptr); }
    void uninitialize() override { CoUninitialize(); }
    void freeUnusedLibraries() override { CoFreeUnusedLibraries(); }

    HRESULT createInstance(REFCLSID classId, REFIID riid, void** object) override {
        return CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, riid, object);
    }
};

// No static inside the function: what guards one stays behind when the module is unloaded.
SystemRegistration systemRegistration;

}  // namespace

RegistrationSystem& registrationSystem() noexcept {
    return systemRegistration;
}

}  // namespace platform
