#include "platform/module/module_system.h"

namespace platform {

DWORD moduleFileName(ModuleHandle module, std::span<char> path) noexcept {
    const auto capacity = static_cast<DWORD>(path.size());
    const DWORD length = GetModuleFileNameA(static_cast<HMODULE>(module), path.data(), capacity);
    if (length < capacity) return length;
    // Cut; not every Windows says so.
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
}

void disableThreadNotifications(ModuleHandle module) noexcept {
    DisableThreadLibraryCalls(static_cast<HMODULE>(module));
}

bool systemPlatform(DWORD& identifier) noexcept {
    OSVERSIONINFOA version{};
    version.dwOSVersionInfoSize = sizeof version;
    if (!GetVersionExA(&version)) return false;
    identifier = version.dwPlatformId;
    return true;
}

}  // namespace platform
