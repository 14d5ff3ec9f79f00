#include <atomic>

#include <gtest/gtest.h>

#include "tests/platform/owned_handle.h"

namespace platform {
namespace {

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
