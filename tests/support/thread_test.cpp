#include "support/thread.h"

#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <stdexcept>

#include <gtest/gtest.h>

namespace mvn {
namespace {

constexpr DWORD patience = 60'000;

class ThreadTest : public testing::Test {
protected:
    ~ThreadTest() override {
        for (HANDLE event : {begun_, mayEnd_, ended_}) CloseHandle(event);
    }

    static HANDLE makeEvent() { return CreateEventW(nullptr, TRUE, FALSE, nullptr); }
    static bool isSet(HANDLE event, DWORD milliseconds) {
        return WaitForSingleObject(event, milliseconds) == WAIT_OBJECT_0;
    }

    /// With captures of its own, of which some follow the wait.
    std::function<void()> work() {
        return [begun = begun_, mayEnd = mayEnd_, ended = ended_] {
            SetEvent(begun);
            isSet(mayEnd, patience);
            SetEvent(ended);
        };
    }

    const HANDLE begun_ = makeEvent();
    const HANDLE mayEnd_ = makeEvent();
    const HANDLE ended_ = makeEvent();
};

TEST_F(ThreadTest, RunsFromStartToTheCallablesEnd) {
    Thread thread(work());
    EXPECT_FALSE(isSet(begun_, 20));
    thread.Start();
    EXPECT_TRUE(isSet(begun_, patience));
    EXPECT_FALSE(isSet(thread.Handle(), 0));
    SetEvent(mayEnd_);
    EXPECT_TRUE(isSet(thread.Handle(), patience));
    EXPECT_TRUE(isSet(ended_, 0));

    DWORD id = 0;
    Thread told([&id] { id = GetCurrentThreadId(); });
    told.Start();
    EXPECT_TRUE(isSet(told.Handle(), patience));
    EXPECT_EQ(told.Id(), id);
}

TEST_F(ThreadTest, IsDestroyedAtOnceWhateverItDoes) {
    { const Thread neverStarted(work()); }
    EXPECT_FALSE(isSet(begun_, 20));
    auto running = std::make_unique<Thread>(work());
    running->Start();
    EXPECT_TRUE(isSet(begun_, patience));
    running.reset();
    EXPECT_FALSE(isSet(ended_, 0));
    SetEvent(mayEnd_);
    EXPECT_TRUE(isSet(ended_, patience));

    ResetEvent(ended_);
    constexpr int times = 100;
    std::atomic<int> runs{0};
    std::optional<Thread> next;
    for (int i = 0; i < times; ++i) {
        next.emplace([&, i] {
            if (i % 2 == 0 && ++runs == times / 2) SetEvent(ended_);
        });
        if (i % 2 == 0) next->Start();
    }
    EXPECT_TRUE(isSet(ended_, patience)) << "of 50 only " << runs << " ran what they were made for";
}

void runToTheEnd(const std::function<void()>& callable) {
    Thread thread(callable);
    thread.Start();
    WaitForSingleObject(thread.Handle(), patience);
}

TEST(ThreadDeathTest, AnExceptionEndsTheProcess) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_DEATH(runToTheEnd([] { throw std::runtime_error("escaped"); }), "");
    EXPECT_DEATH(runToTheEnd(nullptr), "");
}

}  // namespace
}  // namespace mvn
