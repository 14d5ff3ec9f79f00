#include <algorithm>
#include <atomic>
#include <future>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "engine/fec_receiver.h"
#include "host/graph/receiver_branch.h"
#include "host/graph/sender_branch.h"
#include "host/stages/repair_chain.h"
#include "support/log/dummy_log_perf.h"
#include "tests/host/arrivals.h"

namespace mvrtpfec {
namespace {

constexpr MatrixConfig bothFiveByFive{fecBoth, 5, 5};

/// Each arrival has a time and a source port of its own.
Moment momentOf(std::size_t arrival) {
    Moment moment;
    moment.time = std::chrono::nanoseconds(arrival + 1);
    std::vector<std::uint8_t> frame;
    moment.addressing.build({}, 5004, frame);
    writeBigEndian16(&frame[34], static_cast<std::uint16_t>(arrival));
    moment.addressing.take(frame, *locateUdp(LinkType::ethernet, frame));
    return moment;
}

std::vector<std::uint8_t> frameFrom(const Moment& moment) {
    std::vector<std::uint8_t> frame;
    moment.addressing.build({}, 5004, frame);
    return frame;
}

/// What a repair gave: each packet with the arrival that set it free, and the figures as text.
struct Repaired {
    std::vector<std::pair<std::size_t, std::vector<std::uint8_t>>> packets;
    std::string figures;

    bool operator==(const Repaired&) const = default;
};

template <class Figures>
std::string textOf(const Figures& figures) {
    std::string text;
    const auto add = [&](std::uint64_t count) { text += std::to_string(count) + " "; };
    const RtpFecInTotals& r = figures.receiver;
    for (const auto count : {r.received, r.lost, r.rebuilt, r.abandoned, r.resets}) add(count);
    for (const auto count : {figures.delivered, figures.runts}) add(count);
    if (const auto& g = figures.guard)
        for (const auto count :
             {g->late, g->repeated, g->holesSkipped, g->fecKeptBack, g->foreign, g->restarts, g->refed})
            add(count);
    return text;
}

Repaired repairInGraph(const Arrivals& arrivals, bool guarded) {
    Repaired result;
    mvn::log::DummyLogPerf log;
    FilterGraph graph;
    RepairChain chain(graph, guarded ? std::optional(GuardSettings{}) : std::nullopt, log,
                      [&](ConstRtpPacketView packet, const Moment& moment) {
                          const auto arrival = static_cast<std::size_t>(moment.time.count()) - 1;
                          EXPECT_EQ(frameFrom(moment), frameFrom(momentOf(arrival)));
                          result.packets.push_back({arrival, {packet.data, packet.data + packet.length}});
                      });
    graph.run();
    for (std::size_t i = 0; i < arrivals.size(); ++i)
        chain.push(arrivals[i].port, arrivals[i].bytes, momentOf(i));
    chain.finish();
    result.figures = textOf(chain.figures());
    return result;
}

Repaired repairByEngine(const Arrivals& arrivals, bool guarded) {
    Repaired result;
    std::size_t arrival = 0;
    FecReceiver receiver(
        [&](ConstRtpPacketView packet) {
            result.packets.push_back({arrival, {packet.data, packet.data + packet.length}});
        },
        guarded ? std::optional(GuardSettings{}) : std::nullopt);
    for (std::size_t i = 0; i < arrivals.size(); ++i) {
        arrival = i;
        receiver.push(static_cast<ReceiverInput>(arrivals[i].port), arrivals[i].bytes);
    }
    receiver.finish();
    result.figures = textOf(receiver.figures());
    return result;
}

void append(Arrivals& all, const Arrivals& more) {
    all.insert(all.end(), more.begin(), more.end());
}

/// Now and then what is no packet of the stream: runts, other payload types, packets longer than any sender
/// makes.
Arrivals withStrangers(const Arrivals& arrivals) {
    Arrivals mixed;
    for (std::size_t i = 0; i < arrivals.size(); ++i) {
        mixed.push_back(arrivals[i]);
        if (i % 97 == 5) mixed.push_back({StreamPort::media, {0x80, 33, 0}});
        if (i % 131 == 7) mixed.push_back({StreamPort::fecA, mediaPacket(static_cast<std::uint16_t>(i), 9)});
        if (i % 149 == 3) {
            mixed.push_back({StreamPort::fecB, mediaPacket(7, 3, 40)});
            mixed.back().bytes[1] = 77;
        }
        if (i % 211 == 100) mixed.back().bytes.resize(60000, 0x5a);
        if (i % 307 == 200) mixed.back().bytes.resize(rtpHeaderSize);
    }
    return mixed;
}

std::map<std::string, Arrivals> captures() {
    const ChannelConfig scattered{.loss = 0.03, .fecLoss = 0.03, .seed = 3};
    const ChannelConfig bursts{.loss = 0.05, .fecLoss = 0.02, .burst = 6, .seed = 5};
    const ChannelConfig jumbled{.loss = 0.02, .reorder = 15, .duplicate = 0.05, .seed = 7};
    const ChannelConfig hopeless{.loss = 0.4, .fecLoss = 0.4, .burst = 20, .reorder = 60, .seed = 9};
    const Arrivals stream = protectedStream(100, 1200, bothFiveByFive);
    Arrivals restarted = throughChannel(protectedStream(100, 700, bothFiveByFive), scattered);
    append(restarted, throughChannel(protectedStream(80, 700, {fecBoth, 5, 6}, 2), scattered));

    return {{"whole", stream},
            {"scattered", throughChannel(stream, scattered)},
            {"bursts", throughChannel(protectedStream(0, 1200, {fecRow, 10, 4}), bursts)},
            {"jumbled", throughChannel(stream, jumbled)},
            {"hopeless", throughChannel(stream, hopeless)},
            {"wrap", throughChannel(protectedStream(64900, 1500, bothFiveByFive), scattered)},
            {"restart", restarted},
            {"strangers", withStrangers(throughChannel(stream, bursts))},
            {"one packet", {{StreamPort::media, mediaPacket(1)}}},
            {"nothing", {}}};
}

TEST(Graph, RepairsPacketForPacketAsTheEngineDoes) {
    for (const auto& [name, arrivals] : captures())
        for (const bool guarded : {false, true}) {
            SCOPED_TRACE(name + (guarded ? " guarded" : ""));
            const Repaired expected = repairByEngine(arrivals, guarded);
            EXPECT_EQ(expected.packets.empty(), name == "nothing");
            for (int run = 0; run < 2; ++run) {
                const Repaired actual = repairInGraph(arrivals, guarded);
                EXPECT_EQ(actual.figures, expected.figures);
                EXPECT_TRUE(actual.packets == expected.packets);
            }
        }
}

TEST(Graph, TellsWhatIsMissingAndWhatWasRebuilt) {
    for (std::uint32_t seed = 1; seed <= 8; ++seed)
        for (const bool guarded : {false, true}) {
            SCOPED_TRACE(std::to_string(seed) + (guarded ? " guarded" : ""));
            const Story story = randomStory(seed);
            std::set<std::uint32_t> delivered;
            mvn::log::DummyLogPerf log;
            FilterGraph graph;
            RepairChain chain(graph, guarded ? std::optional(GuardSettings{}) : std::nullopt, log,
                              [&](ConstRtpPacketView packet, const Moment&) {
                                  // Without the guard some are rebuilt wrong.
                                  if (story.sent.contains(packet.timestamp()))
                                      delivered.insert(packet.timestamp());
                              });
            graph.run();
            for (const Arrival& arrival : story.arrivals) chain.push(arrival.port, arrival.bytes, {});
            chain.finish();
            const RepairFigures figures = chain.figures();
            std::uint64_t lost = 0;
            std::uint64_t rebuilt = 0;
            for (const std::uint32_t packet : story.sent) {
                if (!story.came.contains(packet) || !delivered.contains(packet)) ++lost;
                if (!story.came.contains(packet) && delivered.contains(packet)) ++rebuilt;
            }
            EXPECT_EQ(figures.stream.lost(), lost);
            // Without it some are rebuilt wrong.
            EXPECT_TRUE(!guarded || figures.stream.rebuilt == rebuilt) << figures.stream.rebuilt << rebuilt;
            EXPECT_EQ(figures.stream.restarts, 2U);
            EXPECT_TRUE(!guarded || figures.resets() == 0) << figures.resets();
        }
}

Arrivals protectInGraph(const Arrivals& media, const MatrixConfig& matrix) {
    Arrivals sent;
    FilterGraph graph;
    SenderBranch sender(graph, matrix, [&](StreamPort port, ConstRtpPacketView fec) {
        sent.push_back({port, {fec.data, fec.data + fec.length}});
    });
    graph.run();
    for (const Arrival& packet : media) {
        if (packet.port != StreamPort::media) continue;
        sent.push_back(packet);
        sender.push(viewOf(packet.bytes));
    }
    sender.finish();
    return sent;
}

TEST(Graph, ProtectsPacketForPacketAsTheEngineDoes) {
    // Each thread draws the same first FEC sequence numbers.
    const auto onFreshThread = [](auto work) { return std::async(std::launch::async, work).get(); };
    for (const MatrixConfig& matrix :
         {bothFiveByFive, MatrixConfig{fecRow, 8, 4}, MatrixConfig{fecColumn, 1, 20}}) {
        const auto expected = onFreshThread([&] { return protectedStream(65000, 1000, matrix); });
        const auto actual = onFreshThread([&] { return protectInGraph(expected, matrix); });
        EXPECT_GT(expected.size(), 1000u);
        EXPECT_TRUE(actual == expected);
    }
}

/// A receiver in a graph; media go to input 0.
class Receiving : public ::testing::Test {
protected:
    void start(ReceiverBranch::Output output) {
        receiver_.emplace(graph_, log_, std::move(output));
        graph_.run();
    }
    void push(std::uint16_t number) {
        const auto bytes = mediaPacket(number);
        receiver_->push(0, std::make_unique<RtpPacket>(bytes.data(), bytes.size()), Moment());
    }

    FilterGraph graph_;
    mvn::log::DummyLogPerf log_;
    std::optional<ReceiverBranch> receiver_;
};

TEST_F(Receiving, FailureOfTheOutputComesOutOnTheHostsThreadOnce) {
    int calls = 0;
    start([&](ConstRtpPacketView, const Moment&) {
        if (++calls == 3) throw std::runtime_error("disk full");
    });
    const auto feed = [&] {
        for (std::uint16_t number = 0; number < 5000; ++number) push(number);
        receiver_->waitUntilIdle();
    };
    try {
        feed();
        FAIL() << "nothing thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "disk full");
    }
    EXPECT_THROW(receiver_->waitUntilIdle(), std::runtime_error);
    EXPECT_EQ(calls, 3);
}

TEST_F(Receiving, PushWaitsForASlowOutput) {
    std::atomic<int> pushed{0};
    int delivered = 0;
    int widest = 0;
    start([&](ConstRtpPacketView, const Moment&) {
        widest = std::max(widest, pushed - delivered++);
        if (delivered < 2000) std::this_thread::yield();
    });
    for (std::uint16_t number = 0; number < 20000; ++number) {
        push(number);
        ++pushed;
    }
    receiver_->waitUntilIdle();
    EXPECT_GT(delivered, 19000);
    EXPECT_LE(widest, static_cast<int>(InFlight::maxDue) + 10);
}

/// When the graph stops packets wait in a reorder buffer, in the queue and in the decoder.
TEST_F(Receiving, HalfFedGraphStops) {
    std::promise<void> fed;
    int calls = 0;
    start([&, isFed = fed.get_future().share()](ConstRtpPacketView, const Moment&) {
        if (++calls == 1) isFed.wait();
    });
    for (std::uint16_t number = 0; number < 200; ++number) push(number);
    for (std::uint16_t number = 210; number < 220; ++number) push(number);
    fed.set_value();
    receiver_.reset();
    EXPECT_LE(calls, 200);
}

}  // namespace
}  // namespace mvrtpfec
