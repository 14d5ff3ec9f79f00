#include <array>
#include <atomic>
#include <cstdio>

#include "platform/threads/blocked_note-posix.h"
#include "platform/threads/blocked_threads.h"

namespace platform {
namespace {

/// Of one thread. Read by others at any time, so a text may mix two waits that follow each other; the
/// atomics are relaxed so that keeping the record orders nothing between threads.
class Record {
public:
    Record();
    ~Record();

    void set(const void* awaited, std::size_t objects, DWORD owner) noexcept {
        objects_.store(objects, std::memory_order_relaxed);
        owner_.store(owner, std::memory_order_relaxed);
        awaited_.store(awaited, std::memory_order_relaxed);
    }

    void describe(std::string& text) const;

    Record* previous = nullptr;
    Record* next = nullptr;

private:
    const DWORD thread_ = GetCurrentThreadId();
    std::atomic<const void*> awaited_{nullptr};
    /// 0 for a critical section.
    std::atomic<std::size_t> objects_{0};
    std::atomic<DWORD> owner_{0};
};

constinit std::mutex recordsMutex;
constinit Record* records = nullptr;
thread_local Record ownRecord;

Record::Record() {
    const std::lock_guard lock(recordsMutex);
    next = records;
    if (next != nullptr) next->previous = this;
    records = this;
}

Record::~Record() {
    const std::lock_guard lock(recordsMutex);
    (previous != nullptr ? previous->next : records) = next;
    if (next != nullptr) next->previous = previous;
}

void Record::describe(std::string& text) const {
    const void* awaited = awaited_.load(std::memory_order_relaxed);
    if (awaited == nullptr) return;
    const std::size_t objects = objects_.load(std::memory_order_relaxed);
    std::array<char, 128> line{};
    if (objects == 0)
        std::snprintf(line.data(), line.size(),
                      "thread %u waits for critical section %p, held by thread %u\n", thread_, awaited,
                      owner_.load(std::memory_order_relaxed));
    else
        std::snprintf(line.data(), line.size(), "thread %u waits for %zu object(s), the first %p\n", thread_,
                      objects, awaited);
    text += line.data();
}

}  // namespace

std::string blockedThreads() {
    std::string text;
    const std::lock_guard lock(recordsMutex);
    for (const Record* record = records; record != nullptr; record = record->next) record->describe(text);
    return text;
}

BlockedNote::BlockedNote(const void* firstObject, std::size_t count) noexcept {
    ownRecord.set(firstObject, count, 0);
}

BlockedNote::BlockedNote(const CRITICAL_SECTION* section, DWORD owner) noexcept {
    ownRecord.set(section, 0, owner);
}

BlockedNote::~BlockedNote() {
    ownRecord.set(nullptr, 0, 0);
}

}  // namespace platform
