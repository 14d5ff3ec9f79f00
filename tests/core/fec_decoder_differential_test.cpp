#include <array>

#include <gtest/gtest.h>

#include "core/reorder_buffer.h"
#include "tests/core/stream.h"
#include "tests/model/decoder_twins.h"

namespace mvrtpfec {
namespace {

using model::DecoderTwins;

/// What happened over many streams.
struct Totals {
    model::Events events;
    std::uint64_t rebuilt = 0, abandoned = 0, failures = 0, released = 0;

    void add(DecoderTwins& twins) {
        twins.restart();
        events.add(twins.events());
        rebuilt += twins.rebuilt();
        abandoned += twins.abandoned();
        failures += twins.failures();
        released += twins.released().size();
        twins.forgetReleased();
    }
};

/// Media, column and row packets through a reorder buffer each, as the inputs of a receiver.
class Inputs {
public:
    explicit Inputs(const std::vector<Bytes>& packets) : packets_(packets) {}

    template <class Function>
    void push(std::size_t index, Function function) {
        Buffer& buffer = buffers_[inputOf(packets_[index])];
        buffer.Push(index);
        for (std::size_t due = 0; buffer.Pop(due);) function(packets_[due]);
    }

private:
    using Buffer = CRtpPacketReorderBuffer<std::size_t>;

    static std::size_t inputOf(const Bytes& packet) {
        if (packet.size() < 28 || viewOf(packet).payloadType() != fecPayloadType) return 0;
        return fecKind(viewOf(packet)) == FecKind::column ? 1 : 2;
    }
    Buffer makeBuffer() {
        return {20, 65535, [this](std::size_t index) {
                    return packets_[index].size() < 4 ? 0 : std::int32_t{numberOf(packets_[index])};
                }};
    }

    const std::vector<Bytes>& packets_;
    std::array<Buffer, 3> buffers_{makeBuffer(), makeBuffer(), makeBuffer()};
};

/// Feeds the packets to the twins, one in ten times with a callback that throws now and then.
void compareOn(const std::vector<Bytes>& packets, Random& random, bool reordered, Totals& totals) {
    DecoderTwins twins(random.chance(0.1) ? 3 : 0);
    Inputs inputs(packets);
    for (std::size_t n = 0; n < packets.size() && twins.difference().empty(); ++n) {
        if (reordered)
            inputs.push(n, [&](const Bytes& packet) { twins.feed(packet); });
        else
            twins.feed(packets[n]);
    }
    totals.add(twins);
    EXPECT_EQ(twins.difference(), "");
}

/// A stream for each seed, until one shows a difference.
template <class MakeStream>
Totals compareOnStreams(std::uint64_t firstSeed, std::uint64_t count, bool reordered, MakeStream makeStream) {
    Totals totals;
    for (std::uint64_t seed = firstSeed; seed < firstSeed + count && !::testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        compareOn(makeStream(random), random, reordered, totals);
    }
    return totals;
}

std::vector<Bytes> ordinaryStream(Random& random) {
    return makeStream(random, drawPlan(random, false));
}
std::vector<Bytes> hostileStream(Random& random) {
    return makeStream(random, drawPlan(random, true));
}

TEST(FecDecoderDifferential, streamsOfAnOrdinarySender) {
    const Totals totals = compareOnStreams(1, 1000, false, ordinaryStream);
    EXPECT_GT(totals.events.rebuiltOnArrival, 2000);
    EXPECT_GT(totals.events.rebuiltInPass, 1000);
    EXPECT_GT(totals.events.seedsAlone, 20);
    EXPECT_GT(totals.events.secondLosses, 10000);
    EXPECT_GT(totals.events.invalidCandidates, 1000);
    EXPECT_GT(totals.events.windowWraps, 100);
    EXPECT_GT(totals.events.tooManyMissing, 200);
    EXPECT_GT(totals.released, 100000u);
}

TEST(FecDecoderDifferential, streamsThroughReorderBuffers) {
    const Totals totals = compareOnStreams(100000, 2000, true, ordinaryStream);
    EXPECT_GT(totals.events.rebuiltInPass, 2000);
    EXPECT_GT(totals.events.seedsAlone, 50);
    EXPECT_GT(totals.events.windowWraps, 200);
    EXPECT_GT(totals.abandoned, 10000u);
}

TEST(FecDecoderDifferential, hostileStreams) {
    const Totals totals = compareOnStreams(200000, 1000, false, hostileStream);
    EXPECT_GT(totals.rebuilt, 2000u);
    EXPECT_GT(totals.events.carriedFec, 50);
    EXPECT_GT(totals.events.overlongSources, 500);
    EXPECT_GT(totals.events.emptyOffsets, 100);
    EXPECT_GT(totals.events.contradictions, 1000);
    EXPECT_GT(totals.events.foreign, 50);
    EXPECT_GT(totals.events.truncated, 100);
    EXPECT_GT(totals.failures, 2000u);
}

TEST(FecDecoderDifferential, hostileStreamsThroughReorderBuffers) {
    const Totals totals = compareOnStreams(300000, 1000, true, hostileStream);
    EXPECT_GT(totals.rebuilt, 500u);
    EXPECT_GT(totals.events.emptyOffsets, 30);
    EXPECT_GT(totals.failures, 1000u);
}

TEST(FecDecoderDifferential, groupsOfAnyShape) {
    const Totals totals = compareOnStreams(400000, 500, false, makeOddGroupStream);
    EXPECT_GT(totals.rebuilt, 200u);
    EXPECT_GT(totals.events.emptyOffsets, 300);
    EXPECT_GT(totals.events.secondLosses, 3000);
}

/// More packets than there are numbers, so that the window goes all the way round.
TEST(FecDecoderDifferential, longStreams) {
    const auto longStream = [](Random& random) {
        StreamPlan plan = drawPlan(random, false);
        plan.mediaPackets = 80000;
        plan.matrixChanges = 3;
        plan.usualLength = 20;
        plan.loss = 0.01;
        return makeStream(random, plan);
    };
    const Totals totals = compareOnStreams(500000, 2, true, longStream);
    EXPECT_GT(totals.rebuilt, 1000u);
    EXPECT_GT(totals.events.windowWraps, 1);
    EXPECT_GT(totals.released, 150000u);
}

}  // namespace
}  // namespace mvrtpfec
