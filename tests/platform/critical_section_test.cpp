#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/platform/owned_handle.h"

namespace platform {
namespace {

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

}  // namespace
}  // namespace platform
