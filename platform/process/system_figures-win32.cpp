#include "platform/process/system_figures.h"
#include "platform/types.h"

// Behind the types.
#include <psapi.h>

namespace platform {

namespace {

std::uint64_t unitsOf(const FILETIME& time) noexcept {
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

void readTimes(SystemFigures& figures) noexcept {
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    FILETIME idle{};
    if (GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user) != 0) {
        figures.processKernelTime = unitsOf(kernel);
        figures.processUserTime = unitsOf(user);
    }
    if (GetSystemTimes(&idle, &kernel, &user) != 0) {
        figures.idleTime = unitsOf(idle);
        figures.kernelTime = unitsOf(kernel);
        figures.userTime = unitsOf(user);
    }
}

void readMemory(SystemFigures& figures) noexcept {
    PROCESS_MEMORY_COUNTERS counters{};
    if (K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters) != 0) {
        figures.workingSet = counters.WorkingSetSize;
        figures.privateBytes = counters.PagefileUsage;
    }
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    if (GlobalMemoryStatusEx(&status) != 0)
        figures.committedBytes = status.ullTotalPageFile - status.ullAvailPageFile;
}

}  // namespace

SystemFigures readSystemFigures() noexcept {
    SystemFigures figures;
    readTimes(figures);
    readMemory(figures);
    DWORD handles = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &handles) != 0) figures.handleCount = handles;
    return figures;
}

}  // namespace platform
