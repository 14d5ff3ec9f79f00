#include <array>

#include "platform/types.h"
#include "tests/registration/footprint.h"
// After the types, which they need.
#include <psapi.h>
#include <tlhelp32.h>

namespace {

/// Committed pages, but for those of files.
std::size_t memory() {
    std::size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (char* at = nullptr; VirtualQuery(at, &region, sizeof region) != 0; at += region.RegionSize)
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += region.RegionSize;
    return bytes;
}

/// Not every system counts them; the next free one then tells, which has the lowest number.
std::size_t handles() {
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    if (count > 0) return count;
    const HANDLE next = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(next);
    return reinterpret_cast<std::size_t>(next);
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
