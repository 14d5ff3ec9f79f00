#pragma once

#include <filesystem>
#include <memory>

namespace platform {

struct LibraryClosing {
    void operator()(void* library) const noexcept;
};

/// A loaded shared library or DLL.
using SharedLibrary = std::unique_ptr<void, LibraryClosing>;
using LibraryFunction = void (*)();

/// Throws std::runtime_error with the system's reason. The path may be relative to the working directory.
SharedLibrary openLibrary(const std::filesystem::path& file);

/// Throws std::runtime_error when the library exports no such function.
LibraryFunction findFunction(const SharedLibrary& library, const char* name);

}  // namespace platform
