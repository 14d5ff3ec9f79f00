// Many threads and few objects: nothing may be lost, taken twice or slept through.

#include <array>
#include <atomic>
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
    constexpr int meals = 5000;
    std::array<Fork, seats> forks;
    const ManualEvent served;
    const auto dine = [&](std::size_t seat, bool together) {
        Fork& low = forks[seat == seats - 1 ? 0 : seat];
        Fork& high = forks[seat == seats - 1 ? seat : seat + 1];
        const std::array<HANDLE, 2> both{low.free, high.free};
        isTaken(served, INFINITE);
        for (int i = 0; i < meals; ++i) {
            if (together)
                WaitForMultipleObjects(2, both.data(), TRUE, INFINITE);
            else
                isTaken(low.free, INFINITE), isTaken(high.free, INFINITE);
            ++low.meals;
            std::this_thread::yield();
            ++high.meals;
            SetEvent(low.free);
            SetEvent(high.free);
        }
    };
    Threads threads;
    for (std::size_t seat = 0; seat < seats; ++seat) threads.emplace_back(dine, seat, seat % 2 == 0);
    SetEvent(served);
    threads.clear();
    for (const Fork& fork : forks) EXPECT_EQ(fork.meals, 2 * meals);
}

TEST(WaitStress, ASignalFindsWhoCanUseIt) {
    const AutoEvent both, one, never;
    const Semaphore served;
    Threads threads;
    const auto start = [&](std::vector<HANDLE> objects, bool all) {
        threads.emplace_back([&served, objects, all] {
            const auto count = static_cast<DWORD>(objects.size());
            WaitForMultipleObjects(count, objects.data(), all, INFINITE);
            ReleaseSemaphore(served, 1, nullptr);
        });
        Sleep(10);  // asleep in this order
    };
    start({both, never}, true);
    start({one, both}, false);
    start({both}, false);
    SetEvent(one);   // the second thread's,
    SetEvent(both);  // the third's, though the first two come first
    EXPECT_TRUE(isTaken(served, patience) && isTaken(served, patience));
    EXPECT_FALSE(isTaken(both));
    SetEvent(never);
    SetEvent(both);
}

/// Tries that never sleep meet in every order.
TEST(WaitStress, TryingTogetherAndAloneExcludesOthers) {
    struct Seat {
        const Semaphore free{1, 1};
        std::atomic<int> sitters{0};
        bool isShared() { return ++sitters > 1; }
        bool leave() { return --sitters, ReleaseSemaphore(free, 1, nullptr) != FALSE; }
    };
    std::array<Seat, 2> seats;
    const std::array<HANDLE, 2> both{seats[0].free, seats[1].free};
    std::atomic<int> faults{0};
    const auto sit = [&](std::size_t first, DWORD count) {
        for (int i = 0; i < 50'000; ++i) {
            if (WaitForMultipleObjects(count, &both[first], TRUE, 0) != WAIT_OBJECT_0) continue;
            for (std::size_t seat = first; seat < first + count; ++seat) faults += seats[seat].isShared();
            for (std::size_t seat = first; seat < first + count; ++seat) faults += !seats[seat].leave();
        }
    };
    Threads threads;
    for (int i = 0; i < 2; ++i) threads.emplace_back(sit, 0, 2);
    for (std::size_t seat = 0; seat < seats.size(); ++seat) threads.emplace_back(sit, seat, 1);
    threads.clear();
    EXPECT_EQ(faults, 0);
    EXPECT_TRUE(isTaken(both[0]) && isTaken(both[1]));
}

TEST(WaitStress, WhoIsFreedMayCloseTheObject) {
    constexpr int rounds = 20'000;
    std::atomic<HANDLE> offered{nullptr};
    const std::jthread signaller([&] {
        for (int round = 0; round < rounds; ++round) {
            HANDLE event = nullptr;
            while ((event = offered.exchange(nullptr)) == nullptr) std::this_thread::yield();
            SetEvent(event);
        }
    });
    for (int round = 0; round < rounds; ++round) {
        const AutoEvent event;
        offered = event;
        ASSERT_TRUE(isTaken(event, patience));
    }
}

}  // namespace
}  // namespace platform
