#include <gtest/gtest.h>

#include "platform/component/com_ptr.h"
#include "platform/component/component_runtime.h"
#include "platform/graph/media_graph.h"
#include "platform/threads/sync.h"

namespace platform {

namespace {

constexpr REFERENCE_TIME millisecond = 10'000;
constexpr DWORD patience = 10'000;

class SystemClockTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(createSystemClock(&clock_), S_OK); }
    void TearDown() override {
        clock_.Release();
        CloseHandle(event_);
        CloseHandle(semaphore_);
    }

    REFERENCE_TIME now() {
        REFERENCE_TIME time = 0;
        EXPECT_GE(clock_->GetTime(&time), 0);
        return time;
    }

    DWORD_PTR adviseAt(REFERENCE_TIME due) {
        DWORD_PTR cookie = 0;
        EXPECT_EQ(
            clock_->AdviseTime(due - millisecond, millisecond, reinterpret_cast<HEVENT>(event_), &cookie),
            S_OK);
        return cookie;
    }

    DWORD_PTR adviseEvery(REFERENCE_TIME start, REFERENCE_TIME period) {
        DWORD_PTR cookie = 0;
        EXPECT_EQ(clock_->AdvisePeriodic(start, period, reinterpret_cast<HSEMAPHORE>(semaphore_), &cookie),
                  S_OK);
        return cookie;
    }

    bool signalled(HANDLE object, DWORD milliseconds) {
        return WaitForSingleObject(object, milliseconds) == WAIT_OBJECT_0;
    }

    const ComponentRuntime runtime_;
    CComPtr<IReferenceClock> clock_;
    HANDLE event_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HANDLE semaphore_ = CreateSemaphoreW(nullptr, 0, 1000, nullptr);
};

TEST_F(SystemClockTest, TimeNeverGoesBackAndSaysWhenItStandsStill) {
    REFERENCE_TIME last = now();
    for (int i = 0; i < 10'000; ++i) {
        REFERENCE_TIME time = 0;
        const HRESULT result = clock_->GetTime(&time);
        ASSERT_GE(time, last);
        ASSERT_EQ(result, time == last ? S_FALSE : S_OK);
        last = time;
    }
    const REFERENCE_TIME before = now();
    Sleep(30);
    EXPECT_GE(now() - before, 25 * millisecond);
}

TEST_F(SystemClockTest, AnAdviseIsGivenOnceWhenDueAndNotBefore) {
    const REFERENCE_TIME due = now() + 60 * millisecond;
    const DWORD_PTR cookie = adviseAt(due);
    EXPECT_TRUE(signalled(event_, patience));
    EXPECT_GE(now(), due - millisecond);
    EXPECT_FALSE(signalled(event_, 20));
    EXPECT_EQ(clock_->Unadvise(cookie), S_FALSE);
}

TEST_F(SystemClockTest, TheEarliestAdviseComesFirstAndAWithdrawnOneNever) {
    const DWORD_PTR late = adviseAt(now() + 3600 * 1000 * millisecond);
    adviseAt(now() + 20 * millisecond);
    EXPECT_TRUE(signalled(event_, patience));
    adviseAt(now() - 20 * millisecond);
    EXPECT_TRUE(signalled(event_, patience)) << "due already";
    const DWORD_PTR withdrawn = adviseAt(now() + 40 * millisecond);
    EXPECT_EQ(clock_->Unadvise(withdrawn), S_OK);
    EXPECT_FALSE(signalled(event_, 100));
    EXPECT_EQ(clock_->Unadvise(late), S_OK);
}

TEST_F(SystemClockTest, APeriodicAdviseComesAtItsPaceUntilWithdrawn) {
    const REFERENCE_TIME start = now() + 10 * millisecond;
    const DWORD_PTR cookie = adviseEvery(start, 10 * millisecond);
    for (int i = 0; i < 5; ++i) ASSERT_TRUE(signalled(semaphore_, patience));
    EXPECT_GE(now(), start + 39 * millisecond);
    EXPECT_EQ(clock_->Unadvise(cookie), S_OK);
    while (signalled(semaphore_, 0)) {
    }
    EXPECT_FALSE(signalled(semaphore_, 60));
}

TEST_F(SystemClockTest, PendingAdvisesDontKeepTheClock) {
    adviseAt(now() + 3600 * 1000 * millisecond);
    adviseEvery(now() + 3600 * 1000 * millisecond, millisecond);
    Sleep(50);  // The clock of Wine waits for ever for a thread that is just starting.
    EXPECT_EQ(clock_.Detach()->Release(), 0u);
}

TEST_F(SystemClockTest, BadArgumentsAreRefused) {
    const auto event = reinterpret_cast<HEVENT>(event_);
    const auto semaphore = reinterpret_cast<HSEMAPHORE>(semaphore_);
    DWORD_PTR cookie = 0;
    EXPECT_EQ(clock_->AdviseTime(now(), 0, event, nullptr), E_POINTER);
    EXPECT_EQ(clock_->AdviseTime(5, -10, event, &cookie), E_INVALIDARG);
    EXPECT_EQ(clock_->AdvisePeriodic(now(), 0, semaphore, &cookie), E_INVALIDARG);
    EXPECT_EQ(clock_->AdvisePeriodic(-1, 10, semaphore, &cookie), E_INVALIDARG);
    EXPECT_EQ(clock_->GetTime(nullptr), E_POINTER);
}

}  // namespace

}  // namespace platform
