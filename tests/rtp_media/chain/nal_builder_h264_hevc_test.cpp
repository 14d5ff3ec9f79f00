#include "rtp_media/h264/nal_builder_h264_hevc.h"

#include <optional>
#include <stdexcept>

#include <gtest/gtest.h>

#include "tests/rtp_media/chain/collected_units.h"

namespace mvrtpfec::test {
namespace {

/// The cutting told byte by byte over the whole stream: what the parser must find however it searches.
std::vector<Bytes> modelUnits(const Bytes& stream) {
    std::vector<Bytes> units;
    std::optional<std::size_t> open;
    bool fourByteCode = false, threeByteCode = false, threeZeros = false, twoZeros = false, oneZero = false;
    const auto cut = [&](std::size_t from, std::size_t to) {
        units.emplace_back(stream.begin() + static_cast<std::ptrdiff_t>(from),
                           stream.begin() + static_cast<std::ptrdiff_t>(to));
    };
    for (std::size_t i = 0; i < stream.size(); ++i) {
        const std::uint8_t b = stream[i];
        if (fourByteCode || threeByteCode) {
            const std::size_t start = i - (fourByteCode ? 4 : 3);
            if (open) cut(*open, start);
            open = start;
        }
        fourByteCode = threeZeros && b == 1;
        threeByteCode = twoZeros && b == 1;
        threeZeros = twoZeros && b == 0;
        twoZeros = oneZero && b == 0;
        oneZero = b == 0;
    }
    if (open) cut(*open, stream.size());
    return units;
}

std::vector<Bytes> wholeUnits(const Bytes& stream) {
    NALBuilderH264 parser;
    return unitsOf(parser, stream, [&] { return stream.size(); });
}

TEST(NALBuilderH264, CutsLikeTheModelHoweverTheStreamIsCut) {
    std::mt19937 random(5);
    for (int round = 0; round < 3000; ++round) {
        // Few values, so that start codes, long runs of zeros and halves of codes are everywhere.
        const auto others = 1 + random() % 40;
        Bytes stream(random() % 300);
        for (auto& byte : stream) {
            const auto draw = random() % (6 + others);
            byte = static_cast<std::uint8_t>(draw < 4 ? 0 : draw < 6 ? 1 : draw);
        }
        const auto expected = modelUnits(stream);
        ASSERT_EQ(wholeUnits(stream), expected) << "round " << round;
        NALBuilderH264 byteWise;
        ASSERT_EQ(unitsOf(byteWise, stream, [] { return 1U; }), expected) << "round " << round;
        // The same parser again: a flush leaves nothing behind.
        ASSERT_EQ(unitsOf(byteWise, stream, [&] { return 1 + random() % 9; }), expected) << "round " << round;
    }
}

TEST(NALBuilderH264, KeepsZerosBeyondThreeWithTheUnitBefore) {
    const Bytes stream{0, 0, 1, 9, 0, 0, 0, 0, 0, 1, 7, 0, 0, 1, 8, 0, 0, 1};
    const std::vector<Bytes> expected{{0, 0, 1, 9, 0, 0}, {0, 0, 0, 1, 7}, {0, 0, 1, 8, 0, 0, 1}};
    EXPECT_EQ(wholeUnits(stream), expected);
    EXPECT_TRUE(wholeUnits({0, 0, 2, 0, 0, 0, 1}).empty()) << "no byte follows the code";
}

TEST(NALBuilderH264, TakesTheTimeOfTheSampleThatHoldsTheFirstByte) {
    NALBuilderHEVC parser;
    CollectedUnits collected;
    parser.setListener(&collected);
    REFERENCE_TIME time = 0;
    for (const Bytes& bytes : {Bytes{5, 0, 0}, Bytes{0, 1}, Bytes{0x40, 1, 0}, Bytes{0, 1, 0x42}, Bytes{3}}) {
        const auto sample = sampleOf(bytes);
        sample->SetTime(&(time += 100), nullptr);
        sample->SetDiscontinuity(time == 100);
        sample->SetDataId(static_cast<std::uint64_t>(time));
        parser.input(sample.p);
    }
    parser.flush();
    ASSERT_EQ(collected.units.size(), 2U);
    EXPECT_EQ(collected.units[0]->streamType(), StreamType::hevc);
    EXPECT_EQ(collected.units[0]->timing.pts, 100);
    EXPECT_TRUE(collected.units[0]->timing.discontinuity && !collected.units[0]->timing.hasDts);
    EXPECT_EQ(collected.units[1]->timing.pts, 300);
    EXPECT_EQ(collected.units[1]->timing.dataId, 300U);
    EXPECT_EQ(collected.endsOfStream, 1);
}

TEST(NALBuilderH264, HoldsNoSampleItDoesNotNeed) {
    NALBuilderH264 parser;
    CollectedUnits collected;
    parser.setListener(&collected);
    const auto before = sampleOf(Bytes{1, 2, 3});
    const auto unit = sampleOf(Bytes{0, 0, 1, 9, 9});
    const auto next = sampleOf(Bytes{0, 0, 1, 8});
    const auto held = [](SimpleMediaData& sample) {
        return sample.AddRef() > 2 ? (sample.Release(), true) : (sample.Release(), false);
    };
    parser.input(before.p);
    EXPECT_FALSE(held(*before.p));
    parser.input(unit.p);
    EXPECT_TRUE(held(*unit.p));
    parser.input(next.p);
    EXPECT_FALSE(held(*unit.p));
    parser.flush();
    EXPECT_FALSE(held(*next.p));
}

TEST(NALBuilderH264, OptionsMakeUnitsOfSamples) {
    const std::vector<Bytes> samples{{0, 0, 1, 5, 0, 0, 1, 6}, {7, 7}, {0, 0, 1, 8}};
    const auto feed = [&](NALBuilderH264& parser) {
        CollectedUnits collected;
        parser.setListener(&collected);
        for (const auto& bytes : samples) parser.input(sampleOf(bytes).p);
        parser.setListener(nullptr);
        return collected.contents();
    };
    NALBuilderH264 whole;
    whole.setWholeSamples(true);
    EXPECT_EQ(feed(whole), samples);
    NALBuilderH264 closing;
    closing.setUnitPerSample(true);
    EXPECT_EQ(feed(closing), (std::vector<Bytes>{{0, 0, 1, 5}, {0, 0, 1, 6}, {0, 0, 1, 8}}));
}

TEST(NALBuilderH264, GoesOnAfterAListenerThrewAndAfterAUnitWithoutEnd) {
    struct Thrower : NALListener {
        void onNAL(std::unique_ptr<NAL>) override { throw std::runtime_error("full"); }
        void onEndOfStream() override {}
    } thrower;
    const Bytes stream{0, 0, 1, 5, 0, 0, 1, 6, 0, 0, 1, 7};
    NALBuilderH264 parser;
    parser.setListener(&thrower);
    EXPECT_THROW(parser.input(sampleOf(stream).p), std::runtime_error);
    EXPECT_EQ(unitsOf(parser, stream, [] { return 5U; }), modelUnits(stream));

    const Bytes endless(PendingSamples::maxUnitSize / 4, 0xAA);
    CollectedUnits collected;
    parser.setListener(&collected);
    parser.input(sampleOf(Bytes{0, 0, 1, 5}).p);
    for (int i = 0; i < 4; ++i) parser.input(sampleOf(endless).p);
    parser.input(sampleOf(stream).p);
    parser.flush();
    EXPECT_EQ(collected.contents(), modelUnits(stream));
}

}  // namespace
}  // namespace mvrtpfec::test
