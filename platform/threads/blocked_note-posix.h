#pragma once

#include <cstddef>

#include "platform/threads/sync.h"

namespace platform {

/// While it lives, blockedThreads() tells of the calling thread's wait. A thread waits for one thing at a
/// time. No lock and no memory; only a thread's first note enters it in a list.
class BlockedNote {
public:
    /// It waits for `count` objects, of which the first is named.
    BlockedNote(const void* firstObject, std::size_t count) noexcept;
    /// It waits for a section that, by the look of it, thread `owner` holds.
    BlockedNote(const CRITICAL_SECTION* section, DWORD owner) noexcept;
    ~BlockedNote();

    BlockedNote(const BlockedNote&) = delete;
    BlockedNote& operator=(const BlockedNote&) = delete;
};

}  // namespace platform
