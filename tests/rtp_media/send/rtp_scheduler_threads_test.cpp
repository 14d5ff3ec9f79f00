#include <chrono>
#include <thread>

#include "host/stream/steady_clock.h"
#include "tests/rtp_media/send/scheduler_fixture.h"

namespace mvrtpfec::test {
namespace {

using namespace std::chrono_literals;

struct SchedulerThreads : testing::Test {
    /// A packet that has been due for a moment.
    void feedDue() {
        lane.parser.picture(SteadyClock::now() - 2 * HandClock::second - HandClock::millisecond);
    }

    SteadyClock clock;
    SchedulerTest::Lane lane;
};

TEST_F(SchedulerThreads, CommandsAreAcknowledgedAndAPauseSendsNothing) {
    RTPScheduler scheduler(&clock, SchedulerTest::settings());
    scheduler.addStream(1, StreamType::mpeg4Visual, 5000, 96, &lane.media, &lane.reports, &lane.parser, 0,
                        ParameterSetMode::sdp);
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

TEST_F(SchedulerThreads, AbortDropsWhatIsQueued) {
    RTPScheduler scheduler(&clock, SchedulerTest::settings());
    scheduler.addStream(1, StreamType::mpeg4Visual, 5000, 96, &lane.media, &lane.reports, &lane.parser, 0,
                        ParameterSetMode::sdp);
    scheduler.run();
    for (int i = 0; i < 100; ++i) lane.parser.picture(SteadyClock::now());
    scheduler.abort();
    scheduler.waitForExit();
    EXPECT_TRUE(lane.media.take().empty());
}

TEST_F(SchedulerThreads, ParsersFeedWhileOwnersCommandAndOutputsFail) {
    for (int round = 0; round < 10; ++round) {
        RTPScheduler scheduler(&clock, SchedulerTest::settings());
        scheduler.addStream(1, StreamType::mpeg4Visual, 5000, 96, &lane.media, &lane.reports, &lane.parser, 0,
                            ParameterSetMode::sdp);
        std::atomic<bool> over{false};
        std::thread parser([&] {
            while (!over) {
                feedDue();
                std::this_thread::sleep_for(1ms);
            }
        });
        std::thread owner([&] {
            for (int i = 0; i < 5; ++i) {
                scheduler.run();
                scheduler.getSdp();
                scheduler.pause();
            }
        });
        std::thread failing([&] {
            for (int i = 0; i < 20; ++i) {
                lane.media.bufferResult = i % 2 == 0 ? VFW_E_NOT_COMMITTED : S_OK;
                std::this_thread::sleep_for(3ms);
            }
            lane.media.bufferResult = S_OK;
        });
        owner.join();
        failing.join();
        over = true;
        parser.join();
        if (round % 2 == 0) {
            scheduler.drain();
        } else {
            scheduler.abort();
        }
    }
    EXPECT_FALSE(lane.media.take().empty());
}

}  // namespace
}  // namespace mvrtpfec::test
