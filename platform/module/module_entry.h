#pragma once

#include "platform/module/module_system.h"

// Compiling module_entry-posix.cpp or module_entry-win32.cpp into a module has the system call these, which
// the module defines. Neither may load or unload another module or wait for a thread.

namespace platform {

/// After the module's static objects are constructed.
void moduleLoaded(ModuleHandle module) noexcept;
/// Before they are destroyed.
void moduleUnloading() noexcept;

}  // namespace platform
