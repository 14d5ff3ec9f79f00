#include <array>
#include <chrono>
#include <thread>

#include "host/stream/steady_clock.h"
#include "tests/filters/watchdog.h"
#include "tests/rtp_media/send/scheduler_fixture.h"

namespace mvrtpfec::test {
namespace {

using namespace std::chrono_literals;

struct SchedulerThreads : testing::Test {
    /// A packet that has been due for a moment.
    void feedDue() {
        lane.parser.picture(SteadyClock::now() - 2 * HandClock::second - HandClock::millisecond);
    }

    void add(RTPScheduler& scheduler) {
        scheduler.addStream(1, StreamType::mpeg4Visual, 5000, 96, &lane.media, &lane.reports, &lane.parser, 0,
                            ParameterSetMode::sdp);
    }

    SteadyClock clock;
    SchedulerTest::Lane lane;
};

TEST_F(SchedulerThreads, CommandsAreAcknowledgedAndAPauseSendsNothing) {
    RTPScheduler scheduler(&clock, SchedulerTest::settings());
    add(scheduler);
    feedDue();
    std::this_thread::sleep_for(50ms);
    EXPECT_TRUE(lane.media.take().empty()) << "not told to run";
    scheduler.run();
    scheduler.pause();
    const std::size_t before = lane.media.take().size();  // the pause may have come first
    feedDue();
    std::this_thread::sleep_for(50ms);
    EXPECT_TRUE(lane.media.take().empty());
    scheduler.run();
    lane.parser.picture(SteadyClock::now() - 2 * HandClock::second + 200 * HandClock::millisecond);
    scheduler.drain();
    EXPECT_EQ(before + lane.media.take().size(), 3U) << "what was queued has left";
    scheduler.waitForExit();
    scheduler.run();  // a worker that has ended holds nobody up
}

TEST_F(SchedulerThreads, ADrainOfPacketsThatFitNoBufferReturns) {
    Watchdog watchdog(20s);
    RTPScheduler scheduler(&clock, SchedulerTest::settings());
    add(scheduler);
    lane.media.bufferSize = lane.reports.bufferSize = 20;
    for (int i = 0; i < 3; ++i) feedDue();
    scheduler.drain();
    EXPECT_TRUE(lane.media.take().empty());
}

// Each command in each state that the ones before it leave, and the destructor behind all of them.
TEST_F(SchedulerThreads, EveryOrderOfCommandsReturns) {
    struct Named {
        const char* name;
        void (RTPScheduler::*call)();
    };
    constexpr std::array<Named, 4> commands{{{"run", &RTPScheduler::run},
                                             {"pause", &RTPScheduler::pause},
                                             {"drain", &RTPScheduler::drain},
                                             {"abort", &RTPScheduler::abort}}};
    constexpr unsigned orders = 4 * 4 * 4;
    Watchdog watchdog(20s);
    for (unsigned order = 0; order < orders; ++order) {
        RTPScheduler scheduler(&clock, SchedulerTest::settings());
        add(scheduler);
        bool hasEnded = false;
        bool isSending = false;
        for (unsigned rest = order, i = 0; i < 3; ++i, rest /= 4) {
            const Named& command = commands[rest % 4];
            watchdog.alive(command.name);
            lane.media.take();
            feedDue();
            (scheduler.*command.call)();
            hasEnded = hasEnded || rest % 4 >= 2;
            isSending = !hasEnded && rest % 4 == 0;
        }
        if (hasEnded) scheduler.waitForExit();
        lane.media.take();
        feedDue();
        std::this_thread::sleep_for(40ms);
        EXPECT_EQ(!lane.media.take().empty(), isSending) << "order " << order;
        watchdog.alive("destruction");
    }
}

// A run that follows a run used to stay behind and take back the pause.
TEST_F(SchedulerThreads, APauseHoldsAfterTwoRunsAndARunAfterTwoPauses) {
    RTPScheduler scheduler(&clock, SchedulerTest::settings());
    add(scheduler);
    for (int i = 0; i < 5; ++i) {
        scheduler.run();
        scheduler.run();
        scheduler.pause();
        feedDue();
        std::this_thread::sleep_for(40ms);
        EXPECT_TRUE(lane.media.take().empty());
        scheduler.pause();
        scheduler.run();
        std::this_thread::sleep_for(60ms);
        EXPECT_EQ(lane.media.take().size(), 1U);
    }
}

TEST_F(SchedulerThreads, OwnersCommandWhileParsersFeedAndOutputsFailAndBlock) {
    Watchdog watchdog(20s);
    for (int round = 0; round < 6; ++round) {
        watchdog.alive("a round");
        RTPScheduler scheduler(&clock, SchedulerTest::settings());
        add(scheduler);
        std::atomic<bool> over{false};
        std::vector<std::thread> others;
        others.emplace_back([&] {
            while (!over) {
                feedDue();
                std::this_thread::sleep_for(1ms);
            }
        });
        others.emplace_back([&] {
            for (int i = 0; !over; ++i) {
                lane.media.bufferResult = i % 3 == 0 ? VFW_E_NOT_COMMITTED : S_OK;
                lane.media.isBlocked = i % 3 == 1;
                std::this_thread::sleep_for(7ms);
            }
            lane.media.bufferResult = S_OK;
            lane.media.isBlocked = false;
        });
        std::vector<std::thread> owners;
        for (int owner = 0; owner < 3; ++owner)
            owners.emplace_back([&] {
                for (int i = 0; i < 5; ++i) {
                    scheduler.run();
                    scheduler.getSdp();
                    scheduler.pause();
                }
            });
        for (std::thread& owner : owners) owner.join();
        over = true;
        for (std::thread& other : others) other.join();
        lane.media.take();
        feedDue();
        std::this_thread::sleep_for(40ms);
        EXPECT_TRUE(lane.media.take().empty()) << "the last pause holds";
        // Of a worker that is held in its output.
        lane.media.isBlocked = true;
        scheduler.run();
        std::this_thread::sleep_for(20ms);
        std::thread release([&] {
            std::this_thread::sleep_for(30ms);
            lane.media.isBlocked = false;
        });
        if (round % 3 == 0) scheduler.drain();
        if (round % 3 == 1) scheduler.abort();
        watchdog.alive("destruction");
        release.join();
        EXPECT_TRUE(round % 3 != 0 || !lane.media.take().empty()) << "drained";
    }
}

}  // namespace
}  // namespace mvrtpfec::test
