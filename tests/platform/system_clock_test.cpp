#include <gtest/gtest.h>

#include "platform/component/com_ptr.h"
#include "platform/component/component_runtime.h"
#include "platform/graph/media_graph.h"
#include "tests/platform/owned_handle.h"

namespace platform {

namespace {

constexpr REFERENCE_TIME millisecond = 10'000;

class SystemClockTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(createSystemClock(&clock_), S_OK); }

    REFERENCE_TIME now() {
        REFERENCE_TIME time = 0;
        EXPECT_GE(clock_->GetTime(&time), 0);
        return time;
    }

    HEVENT eventHandle() { return reinterpret_cast<HEVENT>(static_cast<HANDLE>(event_)); }
    HSEMAPHORE semaphoreHandle() { return reinterpret_cast<HSEMAPHORE>(static_cast<HANDLE>(semaphore_)); }

    DWORD_PTR adviseAt(REFERENCE_TIME due) {
        DWORD_PTR cookie = 0;
        EXPECT_EQ(clock_->AdviseTime(due - millisecond, millisecond, eventHandle(), &cookie), S_OK);
        return cookie;
    }

    DWORD_PTR adviseEvery(REFERENCE_TIME start, REFERENCE_TIME period) {
        DWORD_PTR cookie = 0;
        EXPECT_EQ(clock_->AdvisePeriodic(start, period, semaphoreHandle(), &cookie), S_OK);
        return cookie;
    }

    const ComponentRuntime runtime_;
    const AutoEvent event_;
    const Semaphore semaphore_{0, 1000};
    CComPtr<IReferenceClock> clock_;
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
    EXPECT_TRUE(isTaken(event_, patience));
    EXPECT_GE(now(), due - millisecond);
    EXPECT_FALSE(isTaken(event_, 20));
    EXPECT_EQ(clock_->Unadvise(cookie), S_FALSE);
}

TEST_F(SystemClockTest, TheEarliestAdviseComesFirstAndAWithdrawnOneNever) {
    const DWORD_PTR late = adviseAt(now() + 3600 * 1000 * millisecond);
    adviseAt(now() + 20 * millisecond);
    EXPECT_TRUE(isTaken(event_, patience));
    adviseAt(now() - 20 * millisecond);
    EXPECT_TRUE(isTaken(event_, patience)) << "due already";
    const DWORD_PTR withdrawn = adviseAt(now() + 40 * millisecond);
    EXPECT_EQ(clock_->Unadvise(withdrawn), S_OK);
    EXPECT_FALSE(isTaken(event_, 100));
    EXPECT_EQ(clock_->Unadvise(late), S_OK);
}

TEST_F(SystemClockTest, APeriodicAdviseComesAtItsPaceUntilWithdrawn) {
    const REFERENCE_TIME start = now() + 10 * millisecond;
    const DWORD_PTR cookie = adviseEvery(start, 10 * millisecond);
    for (int i = 0; i < 5; ++i) ASSERT_TRUE(isTaken(semaphore_, patience));
    EXPECT_GE(now(), start + 39 * millisecond);
    EXPECT_EQ(clock_->Unadvise(cookie), S_OK);
    while (isTaken(semaphore_, 0)) {
    }
    EXPECT_FALSE(isTaken(semaphore_, 60));
}

TEST_F(SystemClockTest, PendingAdvisesDontKeepTheClock) {
    adviseAt(now() + 3600 * 1000 * millisecond);
    adviseEvery(now() + 3600 * 1000 * millisecond, millisecond);
    Sleep(50);  // The clock of Wine waits for ever for a thread that is just starting.
    EXPECT_EQ(clock_.Detach()->Release(), 0u);
}

TEST_F(SystemClockTest, BadArgumentsAreRefused) {
    DWORD_PTR cookie = 0;
    EXPECT_EQ(clock_->AdviseTime(now(), 0, eventHandle(), nullptr), E_POINTER);
    EXPECT_EQ(clock_->AdviseTime(5, -10, eventHandle(), &cookie), E_INVALIDARG);
    EXPECT_EQ(clock_->AdvisePeriodic(now(), 0, semaphoreHandle(), &cookie), E_INVALIDARG);
    EXPECT_EQ(clock_->AdvisePeriodic(-1, 10, semaphoreHandle(), &cookie), E_INVALIDARG);
    EXPECT_EQ(clock_->GetTime(nullptr), E_POINTER);
}

}  // namespace

}  // namespace platform
