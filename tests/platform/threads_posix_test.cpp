#include <array>
#include <atomic>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include "platform/threads/blocked_threads.h"
#include "platform/threads/sanitizers-posix.h"
#include "tests/platform/owned_handle.h"
#include "tests/shared/soon.h"

namespace platform {
namespace {

constexpr std::size_t stackSize = 0x10000;

DWORD measureStack(LPVOID parameter) {
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, static_cast<std::size_t*>(parameter));
    pthread_attr_destroy(&attributes);
    return 0;
}

DWORD count(LPVOID parameter) {
    ++*static_cast<std::atomic<int>*>(parameter);
    return 0;
}

TEST(NativeThreads, HaveTheStackAskedFor) {
    if (underAddressSanitizer || underThreadSanitizer) GTEST_SKIP() << "an instrumented build adds to it";
    std::size_t size = 0;
    const OwnedHandle thread(CreateThread(nullptr, stackSize, &measureStack, &size, 0, nullptr));
    ASSERT_TRUE(isTaken(thread, patience));
    EXPECT_EQ(size, stackSize);
}

std::size_t pagesInUse() {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages;
}

TEST(NativeThreads, ThatNeverRunLeaveNothing) {
    constexpr std::size_t largeStack = std::size_t{1} << 28;
    std::atomic<int> runs{0};
    const std::size_t before = pagesInUse();
    for (int i = 0; i < 200; ++i) {
        HANDLE thread = CreateThread(nullptr, largeStack, &count, &runs, CREATE_SUSPENDED, nullptr);
        ASSERT_NE(thread, nullptr) << i;
        CloseHandle(thread);
    }
    EXPECT_EQ(runs, 0);
    EXPECT_LT(pagesInUse(), before + 10 * largeStack / static_cast<std::size_t>(getpagesize()));
}

TEST(NativeThreads, SayWhenTheyCannotBeMade) {
    constexpr std::size_t tooMuch = std::size_t{1} << 50;
    std::atomic<int> runs{0};
    EXPECT_EQ(CreateThread(nullptr, tooMuch, &count, &runs, 0, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(runs, 0);
}

// What our own objects refuse, as Windows' do, where stand-ins for Windows don't.

TEST(NativeRefusals, ConcernAnObjectTwiceInAWaitForAll) {
    const AutoEvent event(true);
    const std::array<HANDLE, 2> twice{event, event};
    EXPECT_EQ(WaitForMultipleObjects(2, twice.data(), TRUE, 0), DWORD{WAIT_FAILED});
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_TRUE(isTaken(event)) << "a refused wait took it";
}

TEST(NativeRefusals, ConcernAReleaseOfNoUnits) {
    const Semaphore units(1, 3);
    EXPECT_FALSE(ReleaseSemaphore(units, 0, nullptr));
}

template <class... Parts>
std::string line(const Parts&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    text << '\n';
    return text.str();
}

bool isToldSoon(const std::string& line) {
    return mvrtpfec::soon([&] { return blockedThreads().find(line) != std::string::npos; });
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
