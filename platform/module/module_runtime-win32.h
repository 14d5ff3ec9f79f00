#pragma once

namespace platform {

/// Gives back what the compiler's runtime, which is part of the module, keeps for exceptions and thread-local
/// variables, of all threads. By itself it would leave that behind when the module is unloaded: over 70 KB
/// and a few of the system's slots, which then run out. No other thread is in the module any more.
void releaseModuleRuntime() noexcept;

}  // namespace platform
