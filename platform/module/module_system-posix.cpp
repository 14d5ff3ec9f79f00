#include <cstring>

#include <dlfcn.h>

#include "platform/module/module_system.h"
#include "platform/threads/sync.h"

namespace platform {

DWORD moduleFileName(ModuleHandle module, std::span<char> path) noexcept {
    Dl_info info{};
    if (dladdr(module, &info) == 0 || info.dli_fname == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return 0;
    }
    const std::size_t length = std::strlen(info.dli_fname);
    if (length >= path.size()) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    std::memcpy(path.data(), info.dli_fname, length + 1);
    return static_cast<DWORD>(length);
}

void disableThreadNotifications(ModuleHandle) noexcept {}

bool systemPlatform(DWORD&) noexcept {
    return false;
}

}  // namespace platform
