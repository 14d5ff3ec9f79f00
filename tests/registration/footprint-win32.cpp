#include <array>

#include "platform/types.h"
#include "tests/registration/footprint.h"
// After the types, which they need.
#include <psapi.h>
#include <tlhelp32.h>

namespace {

std::size_t memory() {
    PROCESS_MEMORY_COUNTERS_EX counters{};
    auto* const base = reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters);
    GetProcessMemoryInfo(GetCurrentProcess(), base, sizeof counters);
    return counters.PrivateUsage;
}

std::size_t handles() {
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return count;
}

std::size_t modules() {
    std::array<HMODULE, 1> first{};
    DWORD needed = 0;
    EnumProcessModules(GetCurrentProcess(), first.data(), sizeof first, &needed);
    return needed / sizeof(HMODULE);
}

std::size_t threads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    std::size_t count = 0;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry))
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++count;
    CloseHandle(snapshot);
    return count;
}

}  // namespace

Footprint footprint() {
    return {memory(), handles(), modules(), threads()};
}
