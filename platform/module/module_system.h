#pragma once

#include <span>

#include "platform/types.h"

namespace platform {

// What a module asks of the system about itself.

/// Names the module among those loaded: the system's instance handle, natively any address inside it.
using ModuleHandle = void*;

/// Writes the path of the module's file, zero-terminated, and returns its length. 0, the reason in the
/// thread's last error, when the system doesn't tell or the path doesn't fit.
DWORD moduleFileName(ModuleHandle module, std::span<char> path) noexcept;

/// No more calls of the module's entry point for threads that come and go.
void disableThreadNotifications(ModuleHandle module) noexcept;

/// The kind of system, as GetVersionExA reports it; false, and nothing written, where it reports none.
bool systemPlatform(DWORD& identifier) noexcept;

}  // namespace platform
