// Many threads and few objects: nothing may be lost, taken twice or slept through.

#include <array>
#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/platform/owned_handle.h"

namespace platform {
namespace {

using Threads = std::vector<std::jthread>;

/// Two semaphores, some units of each, and threads that take them in all ways.
class UnitsTest : public testing::Test {
protected:
    static constexpr LONG producers = 4;
    static constexpr LONG rounds = 3000;
    static constexpr LONG unitsPerRound = 3;
    static constexpr LONG all = 2 * producers * rounds * unitsPerRound;

    void produce() {
        for (LONG i = 0; i < rounds; ++i) {
            ReleaseSemaphore(left_, unitsPerRound, nullptr);
            for (LONG unit = 0; unit < unitsPerRound; ++unit) ReleaseSemaphore(right_, 1, nullptr);
        }
    }

    void takeOneByOne(HANDLE preferred, HANDLE other) {
        const std::array<HANDLE, 3> objects{stop_, preferred, other};
        while (WaitForMultipleObjects(3, objects.data(), FALSE, INFINITE) != WAIT_OBJECT_0) count(1);
    }

    void takePairs() {
        const std::array<HANDLE, 2> objects{left_, right_};
        while (!isTaken(stop_))
            if (WaitForMultipleObjects(2, objects.data(), TRUE, 1) == WAIT_OBJECT_0) count(2);
    }

    void count(LONG units) {
        if ((taken_ += units) == all) SetEvent(allTaken_);
    }

    const Semaphore left_, right_;
    const ManualEvent stop_, allTaken_;
    std::atomic<LONG> taken_{0};
};

TEST_F(UnitsTest, AreTakenOnceEach) {
    Threads threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([this] { takeOneByOne(left_, right_); });
        threads.emplace_back([this] { takeOneByOne(right_, left_); });
        threads.emplace_back([this] { takePairs(); });
    }
    for (LONG i = 0; i < producers; ++i) threads.emplace_back([this] { produce(); });
    EXPECT_TRUE(isTaken(allTaken_, patience)) << taken_ << " of " << all;
    SetEvent(stop_);
    threads.clear();
    EXPECT_EQ(taken_, all);
    EXPECT_FALSE(isTaken(left_) || isTaken(right_));
}

/// A fork is an auto-reset event that guards a plain number: two who hold it at once are a data race.
struct Fork {
    const AutoEvent free{true};
    int meals = 0;
};

TEST(WaitStress, PhilosophersEatAlone) {
    constexpr std::size_t seats = 5;
    constexpr int meals = 2000;
    std::array<Fork, seats> forks;
    const auto dine = [&](std::size_t seat, bool together) {
        Fork& low = forks[seat == seats - 1 ? 0 : seat];
        Fork& high = forks[seat == seats - 1 ? seat : seat + 1];
        const std::array<HANDLE, 2> both{low.free, high.free};
        for (int i = 0; i < meals; ++i) {
            if (together)
                WaitForMultipleObjects(2, both.data(), TRUE, INFINITE);
            else
                isTaken(low.free, INFINITE), isTaken(high.free, INFINITE);
            ++low.meals;
            ++high.meals;
            SetEvent(low.free);
            SetEvent(high.free);
        }
    };
    Threads threads;
    for (std::size_t seat = 0; seat < seats; ++seat) threads.emplace_back(dine, seat, seat % 2 == 0);
    threads.clear();
    for (const Fork& fork : forks) EXPECT_EQ(fork.meals, 2 * meals);
}

TEST(WaitStress, ASignalFindsWhoCanUseIt) {
    for (int round = 0; round < 5; ++round) {
        const AutoEvent both, one, never;
        std::atomic<int> served{0};
        Threads threads;
        const auto start = [&](std::vector<HANDLE> objects, bool all, DWORD milliseconds) {
            threads.emplace_back([&served, objects, all, milliseconds] {
                const auto count = static_cast<DWORD>(objects.size());
                if (WaitForMultipleObjects(count, objects.data(), all, milliseconds) < count) ++served;
            });
            Sleep(10);  // asleep in this order
        };
        start({both, never}, true, 300);
        start({one, both}, false, patience);
        start({both}, false, patience);
        SetEvent(one);   // serves the second thread,
        SetEvent(both);  // which has been told already; this is the third's
        threads.clear();
        EXPECT_EQ(served, 2);
        EXPECT_FALSE(isTaken(both));
    }
}

TEST(WaitStress, ManualResetFreesAll) {
    const ManualEvent go;
    std::atomic<int> freed{0};
    Threads threads;
    for (int i = 0; i < 8; ++i) threads.emplace_back([&] { freed += isTaken(go, patience) ? 1 : 0; });
    Sleep(10);
    SetEvent(go);
    threads.clear();
    EXPECT_EQ(freed, 8);
}

TEST(WaitStress, WhoIsFreedMayCloseTheObject) {
    for (int round = 0; round < 2000; ++round) {
        auto event = std::make_unique<AutoEvent>();
        const HANDLE handle = *event;
        const std::jthread signaller([handle] { SetEvent(handle); });
        if (round % 2 == 0) std::this_thread::yield();
        ASSERT_TRUE(isTaken(*event, patience));
        event.reset();
    }
}

}  // namespace
}  // namespace platform
