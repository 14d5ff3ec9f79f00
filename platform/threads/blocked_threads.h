#pragma once

#include <string>

namespace platform {

/// A line for each thread that waits inside this layer now: what it waits for and, for a critical section,
/// which thread holds it. For a watchdog's last words; empty on Windows, whose debuggers know.
std::string blockedThreads();

}  // namespace platform
