#include <array>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/platform/owned_handle.h"

namespace platform {
namespace {

template <std::size_t count>
DWORD waitAny(const std::array<HANDLE, count>& objects, DWORD milliseconds = 0) {
    return WaitForMultipleObjects(count, objects.data(), FALSE, milliseconds);
}

template <std::size_t count>
DWORD waitAll(const std::array<HANDLE, count>& objects, DWORD milliseconds = 0) {
    return WaitForMultipleObjects(count, objects.data(), TRUE, milliseconds);
}

TEST(Waits, TakeWhatTheKindOfObjectGives) {
    const AutoEvent once(true);
    EXPECT_TRUE(SetEvent(once));
    EXPECT_TRUE(isTaken(once));
    EXPECT_FALSE(isTaken(once));
    const ManualEvent always(true);
    EXPECT_TRUE(isTaken(always));
    EXPECT_TRUE(isTaken(always));
    EXPECT_TRUE(ResetEvent(always));
    EXPECT_FALSE(isTaken(always));
    const Semaphore two(2);
    EXPECT_TRUE(isTaken(two));
    EXPECT_TRUE(isTaken(two));
    EXPECT_FALSE(isTaken(two));
}

TEST(Waits, PreferTheLowestIndex) {
    const AutoEvent first, second;
    const Semaphore units(1);
    const std::array<HANDLE, 3> objects{first, units, second};
    SetEvent(second);
    SetEvent(first);
    EXPECT_EQ(waitAny(objects), WAIT_OBJECT_0);
    EXPECT_EQ(waitAny(objects), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(waitAny(objects), WAIT_OBJECT_0 + 2);
    EXPECT_EQ(waitAny(objects), DWORD{WAIT_TIMEOUT});
}

TEST(Waits, ForAllTakeAllOrNothing) {
    const Semaphore units(1);
    const AutoEvent event;
    const std::array<HANDLE, 2> objects{units, event};
    EXPECT_EQ(waitAll(objects, 5), DWORD{WAIT_TIMEOUT});
    LONG previous = -1;
    EXPECT_TRUE(ReleaseSemaphore(units, 1, &previous));
    EXPECT_EQ(previous, 1);
    SetEvent(event);
    EXPECT_EQ(waitAll(objects), WAIT_OBJECT_0);
    EXPECT_FALSE(isTaken(event));
    EXPECT_TRUE(isTaken(units));
    EXPECT_FALSE(isTaken(units));
}

TEST(Waits, EndWithTheirTime) {
    using Clock = std::chrono::steady_clock;
    const AutoEvent never;
    const ManualEvent neither;
    const auto start = Clock::now();
    EXPECT_EQ(waitAny(std::array<HANDLE, 2>{never, neither}, 30), DWORD{WAIT_TIMEOUT});
    EXPECT_EQ(WaitForSingleObject(never, 30), DWORD{WAIT_TIMEOUT});
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(50));  // a system may count in whole ticks
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(20));
}

TEST(Waits, RefuseBadArguments) {
    const AutoEvent event(true);
    std::array<HANDLE, MAXIMUM_WAIT_OBJECTS + 1> many;
    many.fill(event);
    const auto refusal = [&](DWORD count) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(WaitForMultipleObjects(count, many.data(), FALSE, 0), DWORD{WAIT_FAILED});
        return GetLastError();
    };
    EXPECT_EQ(refusal(0), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(refusal(MAXIMUM_WAIT_OBJECTS + 1), DWORD{ERROR_INVALID_PARAMETER});
    many[1] = nullptr;
    EXPECT_EQ(refusal(2), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(WaitForSingleObject(nullptr, 0), DWORD{WAIT_FAILED});
    EXPECT_FALSE(CloseHandle(nullptr));
    EXPECT_TRUE(isTaken(event)) << "a refused wait took it";
}

TEST(Semaphores, KeepTheirMaximum) {
    const Semaphore units(1, 3);
    EXPECT_FALSE(ReleaseSemaphore(units, 3, nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_TOO_MANY_POSTS});
    LONG previous = -1;
    EXPECT_TRUE(ReleaseSemaphore(units, 2, &previous));
    EXPECT_EQ(previous, 1);
    EXPECT_FALSE(ReleaseSemaphore(units, 1, nullptr));
    EXPECT_FALSE(SetEvent(units)) << "no event";
    EXPECT_EQ(CreateSemaphoreW(nullptr, 2, 1, nullptr), nullptr);
    EXPECT_EQ(CreateSemaphoreW(nullptr, -1, 1, nullptr), nullptr);
    EXPECT_EQ(CreateSemaphoreW(nullptr, 0, 0, nullptr), nullptr);
}

class CriticalSectionTest : public testing::Test {
protected:
    CriticalSectionTest() { EXPECT_TRUE(InitializeCriticalSectionAndSpinCount(&section_, 0)); }
    ~CriticalSectionTest() override { DeleteCriticalSection(&section_); }

    bool isFreeForOthers() {
        BOOL entered = FALSE;
        std::jthread([&] {
            entered = TryEnterCriticalSection(&section_);
            if (entered) LeaveCriticalSection(&section_);
        }).join();
        return entered != FALSE;
    }

    CRITICAL_SECTION section_;
};

TEST_F(CriticalSectionTest, IsReentrant) {
    EnterCriticalSection(&section_);
    EXPECT_TRUE(TryEnterCriticalSection(&section_));
    LeaveCriticalSection(&section_);
    EXPECT_FALSE(isFreeForOthers());
    LeaveCriticalSection(&section_);
    EXPECT_TRUE(isFreeForOthers());
}

TEST_F(CriticalSectionTest, LetsOneInAtATime) {
    int entries = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int entry = 0; entry < 20'000; ++entry) {
                EnterCriticalSection(&section_);
                ++entries;
                LeaveCriticalSection(&section_);
            }
        });
    threads.clear();
    EXPECT_EQ(entries, 80'000);
}

struct Work {
    const ManualEvent begun;
    const ManualEvent mayEnd;
    const ManualEvent ended;
    std::atomic<DWORD> thread{0};

    static DWORD WINAPI run(LPVOID parameter) {
        auto& work = *static_cast<Work*>(parameter);
        work.thread = GetCurrentThreadId();
        SetEvent(work.begun);
        isTaken(work.mayEnd, patience);
        SetEvent(work.ended);
        return 0;
    }
};

constexpr std::size_t stackSize = 0x10000;

TEST(Threads, RunWhenResumed) {
    Work work;
    DWORD id = 0;
    const OwnedHandle thread(CreateThread(nullptr, stackSize, &Work::run, &work, CREATE_SUSPENDED, &id));
    EXPECT_FALSE(isTaken(work.begun, 20));
    EXPECT_EQ(ResumeThread(thread), 1u);
    EXPECT_TRUE(isTaken(work.begun, patience));
    EXPECT_EQ(ResumeThread(thread), 0u);
    EXPECT_FALSE(isTaken(thread));
    SetEvent(work.mayEnd);
    EXPECT_TRUE(isTaken(thread, patience));
    EXPECT_TRUE(isTaken(work.ended));
    EXPECT_EQ(work.thread, id);
    EXPECT_NE(id, GetCurrentThreadId());
    EXPECT_EQ(ResumeThread(work.ended), 0xFFFFFFFFu);
}

TEST(Threads, GoOnWithoutTheirHandle) {
    Work work;
    CloseHandle(CreateThread(nullptr, 0, &Work::run, &work, 0, nullptr));
    EXPECT_TRUE(isTaken(work.begun, patience));
    SetEvent(work.mayEnd);
    EXPECT_TRUE(isTaken(work.ended, patience));
}

}  // namespace
}  // namespace platform
