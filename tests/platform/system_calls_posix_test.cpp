#include <cstdlib>

#include <gtest/gtest.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/threads/sanitizers-posix.h"
#include "tests/platform/owned_handle.h"

namespace platform {
namespace {

/// Runs work() in a process that the kernel kills at its first system call or look at the clock. The work is
/// done once before, so that what happens once per thread has happened.
template <class Work>
bool doesWithoutSystemCalls(Work work) {
    const pid_t child = fork();
    if (child == 0) {
        work();
        if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) != 0) _exit(2);
        for (int i = 0; i < 1000; ++i) work();
        syscall(SYS_exit, EXIT_SUCCESS);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == EXIT_SUCCESS) << status;
    return WIFEXITED(status);
}

class SystemCallsTest : public testing::Test {
protected:
    void SetUp() override {
        if (underAddressSanitizer || underThreadSanitizer) GTEST_SKIP() << "the runtime makes calls itself";
    }

    const ManualEvent stop_;
    const AutoEvent event_;
    const Semaphore units_;
};

TEST_F(SystemCallsTest, AreNotNeededWhenNobodyWaits) {
    EXPECT_TRUE(doesWithoutSystemCalls([this] {
        const HANDLE objects[] = {stop_, units_};
        ReleaseSemaphore(units_, 2, nullptr);
        WaitForMultipleObjects(2, objects, FALSE, INFINITE);
        isTaken(units_, 1000);
        isTaken(units_);
        SetEvent(event_);
        isTaken(event_, INFINITE);
    }));
    EXPECT_FALSE(isTaken(stop_));
}

TEST_F(SystemCallsTest, AreNotNeededForAFreeSection) {
    CRITICAL_SECTION section;
    EXPECT_TRUE(doesWithoutSystemCalls([&] {
        EnterCriticalSection(&section);
        EnterCriticalSection(&section);
        LeaveCriticalSection(&section);
        LeaveCriticalSection(&section);
    }));
}

TEST_F(SystemCallsTest, AreMadeToSleep) {
    EXPECT_FALSE(doesWithoutSystemCalls([this] { isTaken(event_, 1); }));
}

}  // namespace
}  // namespace platform
