#pragma once

#include <cstddef>

#include "platform/threads/sync.h"

namespace platform {

class BlockedRecord;

/// While it lives, blockedThreads() tells of the calling thread's wait. No lock, no memory, nothing that
/// stays with the thread.
class BlockedNote {
public:
    /// It waits for `count` objects, of which the first is named.
    BlockedNote(const void* firstObject, std::size_t count) noexcept;
    /// It waits for a section that, by the look of it, thread `owner` holds.
    BlockedNote(const CRITICAL_SECTION* section, DWORD owner) noexcept;
    ~BlockedNote();

    BlockedNote(const BlockedNote&) = delete;
    BlockedNote& operator=(const BlockedNote&) = delete;

private:
    BlockedRecord* record_;
};

}  // namespace platform
