#include "platform/threads/thread_id-posix.h"

#include <atomic>

#include "platform/threads/sync.h"

namespace platform {

namespace {
constinit thread_local DWORD currentId = 0;
}

DWORD newThreadId() noexcept {
    static constinit std::atomic<DWORD> last{0};
    return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

void setThreadId(DWORD id) noexcept {
    currentId = id;
}

}  // namespace platform

DWORD GetCurrentThreadId() {
    if (platform::currentId == 0) platform::currentId = platform::newThreadId();
    return platform::currentId;
}
