#include <stdexcept>
#include <string>
#include <system_error>

#include "platform/module/shared_library.h"
#include "platform/types.h"

namespace platform {

namespace {

std::runtime_error lastError(const std::string& subject) {
    const std::error_code error(static_cast<int>(GetLastError()), std::system_category());
    return std::runtime_error(subject + ": " + error.message());
}

}  // namespace

void LibraryClosing::operator()(void* library) const noexcept {
    FreeLibrary(static_cast<HMODULE>(library));
}

SharedLibrary openLibrary(const std::filesystem::path& file) {
    // The altered search path needs an absolute one; the module's own folder then comes first.
    const HMODULE library =
        LoadLibraryExW(std::filesystem::absolute(file).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (library == nullptr) throw lastError(file.string());
    return SharedLibrary(library);
}

LibraryFunction findFunction(const SharedLibrary& library, const char* name) {
    const FARPROC function = GetProcAddress(static_cast<HMODULE>(library.get()), name);
    if (function == nullptr) throw lastError(name);
    return reinterpret_cast<LibraryFunction>(function);
}

}  // namespace platform
