#include <sstream>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "platform/threads/blocked_threads.h"
#include "tests/platform/owned_handle.h"

namespace platform {
namespace {

template <class... Parts>
std::string line(const Parts&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    text << '\n';
    return text.str();
}

bool isToldSoon(const std::string& line) {
    for (DWORD waited = 0; waited < patience; waited += 10, Sleep(10))
        if (blockedThreads().find(line) != std::string::npos) return true;
    return false;
}

TEST(BlockedThreads, SayWhatTheyWaitFor) {
    CRITICAL_SECTION section;
    const AutoEvent known;
    const Semaphore units;
    DWORD id = 0;
    EnterCriticalSection(&section);
    std::jthread thread([&] {
        id = GetCurrentThreadId();
        SetEvent(known);
        EnterCriticalSection(&section);
        LeaveCriticalSection(&section);
        const HANDLE objects[] = {units, known};
        WaitForMultipleObjects(2, objects, FALSE, INFINITE);
    });
    ASSERT_TRUE(isTaken(known, patience));
    EXPECT_TRUE(isToldSoon(line("thread ", id, " waits for critical section ", &section, ", held by thread ",
                                GetCurrentThreadId())));
    LeaveCriticalSection(&section);
    EXPECT_TRUE(
        isToldSoon(line("thread ", id, " waits for 2 object(s), the first ", static_cast<HANDLE>(units))));
    ReleaseSemaphore(units, 1, nullptr);
    thread.join();
    EXPECT_EQ(blockedThreads(), "");
}

}  // namespace
}  // namespace platform
