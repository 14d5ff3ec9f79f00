#include <gtest/gtest.h>

#include "tests/rtp_media/h264/avc_units.h"

namespace mvrtpfec::test {
namespace {

using Times = std::vector<std::pair<std::uint64_t, std::uint64_t>>;

struct SeiTiming : testing::Test {
    SeiTiming() {
        packetizer.give(spsUnit(hrdSps()));
        packetizer.give(ppsUnit());
    }
    /// A picture with its messages; both delays in ticks of a fiftieth of a second.
    void picture(bool bufferingPeriod, unsigned removalDelay, unsigned outputDelay) {
        packetizer.give(seiUnit(bufferingPeriod, std::pair{removalDelay, outputDelay}));
        packetizer.give(sliceUnit());
    }
    /// Presentation and decode times, in ticks of the stream.
    Times times() {
        packetizer.end();
        Times all;
        for (const auto& packet : packetizer.take())
            all.emplace_back(packet.pts / 1800, packet.ptsOrDts / 1800);
        return all;
    }

    Packetizer packetizer{StreamType::h264};
};

TEST_F(SeiTiming, CountsFromTheLastBufferingPeriod) {
    picture(true, 0, 2);
    picture(false, 2, 6);
    picture(false, 4, 2);
    picture(false, 6, 2);
    picture(true, 8, 2);   // from the first picture
    picture(false, 2, 4);  // from the one before
    picture(true, 4, 2);
    picture(true, 2, 2);
    EXPECT_EQ(times(), (Times{{0, 0}, {6, 0}, {4, 2}, {6, 4}, {8, 6}, {12, 8}, {12, 10}, {14, 12}}));
}

TEST_F(SeiTiming, FollowsTheDelayAcrossItsWrap) {
    picture(true, 0, 2);
    Times expected{{0, 0}};
    for (unsigned count = 2; count < 200; count += 2) {  // five bits: it wraps six times
        picture(false, count % 32, 2);
        expected.emplace_back(count, count - 2);
    }
    EXPECT_EQ(times(), expected);
}

TEST_F(SeiTiming, MessagesInUnitsOfTheirOwnTellTheSame) {
    for (unsigned count = 0; count < 8; count += 2) {
        packetizer.give(seiUnit(count == 0 || count == 4, std::nullopt));
        packetizer.give(Bytes{0, 0, 1, 6, 5, 1, 0xAA, 0x80});  // user data
        picture(false, count < 6 ? count : 2, 2);
    }
    EXPECT_EQ(times(), (Times{{0, 0}, {2, 0}, {4, 2}, {6, 4}}));
}

TEST_F(SeiTiming, ADelayThatFallsWithoutReasonStartsAnewWhereTheTimesAre) {
    picture(true, 0, 2);
    picture(false, 20, 2);
    picture(false, 4, 2);  // unknown until messages tell again: a frame after the one before
    picture(true, 8, 6);
    picture(false, 2, 2);
    EXPECT_EQ(times(), (Times{{0, 0}, {20, 18}, {22, 22}, {24, 18}, {22, 20}}));
}

TEST_F(SeiTiming, FillerHasTheTimesOfItsPicture) {
    const Bytes ones{0, 0, 1, 12, 0xFF, 0xFF, 0xFF, 0xFF, 0x80};
    picture(true, 0, 2);
    packetizer.give(ones);
    picture(false, 2, 6);
    packetizer.give(ones);
    picture(false, 4, 2);
    packetizer.give(ones);
    EXPECT_EQ(times(), (Times{{0, 0}, {0, 0}, {6, 0}, {6, 0}, {4, 2}, {4, 2}}));
}

TEST(SeiTimingOfALongStream, CountsOnForMonths) {
    AvcSps sps = hrdSps();
    sps.vui.numUnitsInTick = 540'000;
    sps.vui.timeScale = 27'000'000;
    sps.vui.nalHrd.removalDelayLengthMinus1 = 28;
    constexpr unsigned months = 500'000'000;
    Packetizer packetizer(StreamType::h264);
    for (const auto& unit : {spsUnit(sps), ppsUnit(), seiUnit(true, std::pair{0U, 2U}, 29), sliceUnit(),
                             seiUnit(false, std::pair{months, 2U}, 29), sliceUnit(), delimiter()})
        packetizer.give(unit);
    ASSERT_EQ(packetizer.sent.size(), 2U);
    EXPECT_EQ(packetizer.sent[1].pts, std::uint64_t{months} * 1800);
    EXPECT_EQ(packetizer.sent[1].ptsOrDts, (std::uint64_t{months} - 2) * 1800);
}

TEST_F(SeiTiming, ASampleTimeIsWhereTheCountGoesOnFrom) {
    packetizer.give(seiUnit(true, std::pair{0U, 4U}));
    packetizer.give(sliceUnit(), 90'000);
    picture(false, 2, 4);
    EXPECT_EQ(times(), (Times{{50, 46}, {52, 48}}));
}

TEST(SeiTimingOfAnEncoder, PresentsEveryFrameOnceAndDecodesInOrder) {
    Packetizer packetizer(StreamType::h264);
    const auto parser = createNALBuilder(StreamType::h264);
    parser->setListener(&packetizer.builder());
    parser->input(sampleOf(sampleStream("h264_bframes_hrd.264")).p);
    parser->flush();
    std::vector<std::uint64_t> presented;
    std::uint64_t frames = 0;
    for (const auto& packet : packetizer.sent) {
        if (!packet.marker) continue;
        presented.push_back(packet.pts / 3600);
        EXPECT_EQ(packet.ptsOrDts, frames < 2 ? 0 : (frames - 2) * 3600);
        ++frames;
    }
    std::sort(presented.begin(), presented.end());
    for (std::size_t i = 0; i < presented.size(); ++i) EXPECT_EQ(presented[i], i);
    EXPECT_EQ(frames, 25U);
}

}  // namespace
}  // namespace mvrtpfec::test
