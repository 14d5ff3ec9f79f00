#include <array>
#include <atomic>
#include <cstddef>
#include <cstdio>

#include "platform/threads/blocked_note-posix.h"
#include "platform/threads/blocked_threads.h"

namespace platform {

/// Of one wait. Read by others at any time, so a text may mix two waits that follow each other; the atomics
/// are relaxed so that keeping the record orders nothing between threads.
class BlockedRecord {
public:
    /// False when it is another thread's.
    bool take(const void* awaited, std::size_t objects, DWORD owner) noexcept {
        DWORD free = 0;
        if (!thread_.compare_exchange_strong(free, GetCurrentThreadId(), std::memory_order_relaxed))
            return false;
        objects_.store(objects, std::memory_order_relaxed);
        owner_.store(owner, std::memory_order_relaxed);
        awaited_.store(awaited, std::memory_order_relaxed);
        return true;
    }
    void leave() noexcept {
        awaited_.store(nullptr, std::memory_order_relaxed);
        thread_.store(0, std::memory_order_relaxed);
    }

    void describe(std::string& text) const;

private:
    std::atomic<DWORD> thread_{0};  ///< 0 while free
    std::atomic<const void*> awaited_{nullptr};
    /// 0 for a critical section.
    std::atomic<std::size_t> objects_{0};
    std::atomic<DWORD> owner_{0};
};

namespace {

/// More threads that wait at once aren't told of.
constexpr std::size_t most = 256;

// Not by thread: what a thread keeps until its end would hold a module that has been unloaded.
constinit std::array<BlockedRecord, most> records;

BlockedRecord* takeRecord(const void* awaited, std::size_t objects, DWORD owner) noexcept {
    const std::size_t start = GetCurrentThreadId();
    for (std::size_t i = 0; i < most; ++i) {
        BlockedRecord& record = records[(start + i) % most];
        if (record.take(awaited, objects, owner)) return &record;
    }
    return nullptr;
}

}  // namespace

void BlockedRecord::describe(std::string& text) const {
    const void* awaited = awaited_.load(std::memory_order_relaxed);
    if (awaited == nullptr) return;
    const DWORD thread = thread_.load(std::memory_order_relaxed);
    const std::size_t objects = objects_.load(std::memory_order_relaxed);
    std::array<char, 128> line{};
    if (objects == 0)
        std::snprintf(line.data(), line.size(),
                      "thread %u waits for critical section %p, held by thread %u\n", thread, awaited,
                      owner_.load(std::memory_order_relaxed));
    else
        std::snprintf(line.data(), line.size(), "thread %u waits for %zu object(s), the first %p\n", thread,
                      objects, awaited);
    text += line.data();
}

std::string blockedThreads() {
    std::string text;
    for (const BlockedRecord& record : records) record.describe(text);
    return text;
}

BlockedNote::BlockedNote(const void* firstObject, std::size_t count) noexcept
    : record_(takeRecord(firstObject, count, 0)) {}

BlockedNote::BlockedNote(const CRITICAL_SECTION* section, DWORD owner) noexcept
    : record_(takeRecord(section, 0, owner)) {}

BlockedNote::~BlockedNote() {
    if (record_ != nullptr) record_->leave();
}

}  // namespace platform
