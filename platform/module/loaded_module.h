#pragma once

#include <filesystem>
#include <memory>

#include "platform/component/component.h"

namespace platform {

/// An in-process component server loaded from a file, for hosts that don't go through the system's
/// registration. It stays loaded while this object lives: objects that it made must be gone before.
class LoadedModule {
public:
    /// Throws std::runtime_error with the system's reason when the file can't be loaded or is no such server.
    explicit LoadedModule(const std::filesystem::path& file);
    ~LoadedModule();

    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    /// The class factory of one of the module's classes, as the module's DllGetClassObject answers.
    HRESULT getClassObject(REFCLSID classId, REFIID riid, void** object) const noexcept;
    /// S_OK when nothing of the module is in use, else S_FALSE.
    HRESULT canUnloadNow() const noexcept;
    HRESULT registerServer() const noexcept;
    HRESULT unregisterServer() const noexcept;

private:
    struct Exports;
    std::unique_ptr<const Exports> exports_;
};

}  // namespace platform
