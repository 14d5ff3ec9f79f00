#include <gtest/gtest.h>

#include "rtp_media/bits/byte_text.h"
#include "tests/rtp_media/h264/avc_units.h"

namespace mvrtpfec::test {
namespace {

struct H264Test : testing::Test {
    /// Parameter sets, so that what follows is sent.
    static void begin(Packetizer& sender, const AvcSps& sps = plainSps()) {
        sender.give(spsUnit(sps));
        sender.give(ppsUnit());
        sender.take();
    }
    std::vector<SentPacket> sendOne(const Bytes& slice) {
        packetizer.give(slice);
        packetizer.give(delimiter());
        return packetizer.take();
    }

    Packetizer packetizer{StreamType::h264};
};

using Sizes = std::vector<std::size_t>;

TEST_F(H264Test, CutsUnitsBeyond1300BytesIntoFragments) {
    begin(packetizer);
    const auto whole = sendOne(sliceUnit(1300));
    EXPECT_EQ(payloadSizes(whole), Sizes{1296});
    EXPECT_TRUE(whole[0].prefix.empty());
    EXPECT_EQ(whole[0].payload.front(), 0x01);

    const Bytes slice = sliceUnit(3901, 0x21);
    const auto parts = sendOne(slice);
    EXPECT_EQ(payloadSizes(parts), (Sizes{1295, 1300, 1300, 1}));
    EXPECT_EQ(parts[0].prefix, (Bytes{0x3C, 0x81}));
    EXPECT_EQ(parts[1].prefix, (Bytes{0x3C, 0x01}));
    EXPECT_EQ(parts[3].prefix, (Bytes{0x3C, 0x41}));
    Bytes joined;
    for (const auto& part : parts) joined.insert(joined.end(), part.payload.begin(), part.payload.end());
    EXPECT_EQ(joined, Bytes(slice.begin() + 5, slice.end()));
    EXPECT_EQ(payloadSizes(sendOne(sliceUnit(1301))), (Sizes{1295, 1}));
    // Numbers run on; the marker ends each access unit.
    std::vector<bool> markers;
    for (const auto& part : parts) markers.push_back(part.marker);
    EXPECT_EQ(markers, (std::vector<bool>{false, false, false, true}));
    EXPECT_EQ(parts[0].sequence, 1U);
    EXPECT_EQ(parts[3].sequence, 4U);
}

TEST_F(H264Test, SendsParameterSetsMessagesAndDelimitersInBandOnly) {
    for (const auto mode : {ParameterSetMode::sdp, ParameterSetMode::rewritten, ParameterSetMode::inBand}) {
        Packetizer sender(StreamType::h264, mode);
        const Bytes unreadablePps{0, 0, 0, 1, 0x68, 0x80};
        for (const auto& unit :
             {delimiter(), spsUnit(hrdSps()), ppsUnit(), unreadablePps, seiUnit(true, std::pair{0U, 2U}),
              sliceUnit(), sliceUnit(), Bytes{0, 0, 1, 0x0C, 0xFF, 0x80}})
            sender.give(unit);
        EXPECT_TRUE(sender.sent.empty());
        sender.end();
        std::vector<int> types;
        for (const auto& packet : sender.sent) types.push_back(packet.payload[0] & 0x1F);
        const bool inBand = mode == ParameterSetMode::inBand;
        EXPECT_EQ(types, inBand ? (std::vector<int>{9, 7, 8, 8, 6, 1, 1, 12}) : (std::vector<int>{1, 1, 12}));
        for (std::size_t i = 0; i < types.size(); ++i) {
            EXPECT_EQ(sender.sent[i].marker, i + 1 == types.size());
            EXPECT_EQ(sender.sent[i].sequence, i);
        }
        EXPECT_EQ(sender.ends, 1);
    }
}

TEST_F(H264Test, SendsNothingWithoutTimingAndDropsWhatIsNoUnit) {
    AvcSps untimed = plainSps();
    untimed.vui.hasTiming = false;
    begin(packetizer, untimed);
    EXPECT_TRUE(sendOne(sliceUnit()).empty());
    EXPECT_FALSE(packetizer.builder().sdpReady());
    begin(packetizer);  // a later set that tells the rate is taken
    EXPECT_EQ(sendOne(sliceUnit()).size(), 1U);
    for (const auto& nothing : {Bytes{}, Bytes{0, 0, 0}, Bytes{0, 0, 1}}) packetizer.give(nothing);
    packetizer.end();
    EXPECT_TRUE(packetizer.sent.empty());
    EXPECT_EQ(packetizer.ends, 1);
}

TEST_F(H264Test, KeepsNoEndlessQueueWherePicturesDoNotComeOrEnd) {
    constexpr std::size_t longest = 65536;
    Packetizer sender(StreamType::h264, ParameterSetMode::inBand);
    for (std::size_t i = 0; i < longest; ++i) sender.give(delimiter());
    EXPECT_TRUE(sender.sent.empty());
    sender.give(spsUnit(plainSps()));
    sender.give(ppsUnit());
    sender.give(sliceUnit());
    sender.give(delimiter());
    EXPECT_EQ(sender.take().size(), 3U) << "what no picture came for is gone";
    for (std::size_t i = 1; i < longest - 1; ++i) sender.give(sliceUnit());
    EXPECT_TRUE(sender.sent.empty()) << "pictures with nothing between them are one";
    sender.give(sliceUnit());
    EXPECT_EQ(sender.sent.size(), longest);
}

TEST(AvcBitRate, IsTheLevelsByTheProfile) {
    struct Case {
        std::uint8_t profile, flags, level;
        std::uint32_t rate;
    };
    for (const auto& [profile, flags, level, rate] :
         {Case{66, 0x10, 11, 153'600}, Case{66, 0, 11, 230'400}, Case{100, 0x10, 11, 288'000},
          Case{100, 0, 9, 192'000}, Case{110, 0, 31, 50'400'000}, Case{128, 0, 40, 30'000'000},
          Case{244, 0, 62, 3'840'000'000}, Case{77, 0, 99, 0}}) {
        AvcSps sps = plainSps();
        sps.profileIdc = profile;
        sps.constraintFlags = flags;
        sps.levelIdc = level;
        EXPECT_EQ(avcBitRate(sps), rate) << int{profile} << ' ' << int{level};
    }
}

TEST_F(H264Test, EachSliceIsAFrameLaterUnlessTheSampleHasATime) {
    begin(packetizer);
    packetizer.give(sliceUnit());
    EXPECT_EQ(sendOne(sliceUnit())[0].pts, 7200U) << "two slices of one picture count twice";
    packetizer.give(sliceUnit(), 900'000, true);
    const auto timed = sendOne(sliceUnit());
    EXPECT_EQ(timed[0].pts, 903'600U) << "the second slice has no time of its own";
    EXPECT_TRUE(timed[0].discontinuity && !timed[1].discontinuity);
    EXPECT_EQ(timed[0].ptsOrDts, timed[0].pts);
    EXPECT_EQ(sendOne(sliceUnit())[0].pts, 907'200U);
}

TEST_F(H264Test, DescribesTheFirstParameterSetsOnceAnAccessUnitIsClosed) {
    const Bytes sps = spsUnit(plainSps());
    const Bytes pps = ppsUnit();
    begin(packetizer);
    packetizer.give(sliceUnit());
    EXPECT_FALSE(packetizer.builder().sdpReady());
    AvcSps other = plainSps();
    other.levelIdc = 40;
    packetizer.give(spsUnit(other));
    EXPECT_EQ(packetizer.builder().sdpAttributes(),
              "a=rtpmap:96 H264/90000\\a=fmtp:96 profile-level-id=4d001e; sprop-parameter-sets=" +
                  toBase64(std::span(sps).subspan(4)) + "," + toBase64(std::span(pps).subspan(4)) +
                  "; packetization-mode=1");
    // 25 frames, and the level's 12 Mbit/s in payloads of 10400 bits.
    EXPECT_EQ(packetizer.builder().getMaxPacketRate(), 25U + 1154U);
    Packetizer constant(StreamType::h264);
    begin(constant, hrdSps());
    EXPECT_EQ(constant.builder().getMaxPacketRate(), 25U + 13U) << "1000 << 7 bit/s";
}

TEST_F(H264Test, WritesTheParameterSetsOfRealEncodersBackAsTheyWere) {
    for (const char* name : {"h264_bframes_hrd.264", "h264_interlaced_hrd.264", "h264_fields.264",
                             "h264_plain.264", "h264_slices_aud.264", "h264_3byte.264"}) {
        std::string attributes;
        for (const auto mode : {ParameterSetMode::sdp, ParameterSetMode::rewritten}) {
            Packetizer sender(StreamType::h264, mode);
            const auto parser = createNALBuilder(StreamType::h264);
            parser->setListener(&sender.builder());
            parser->input(sampleOf(sampleStream(name)).p);
            parser->flush();
            EXPECT_TRUE(sender.builder().sdpReady()) << name;
            if (attributes.empty()) attributes = sender.builder().sdpAttributes();
            EXPECT_EQ(sender.builder().sdpAttributes(), attributes) << name;
        }
    }
    AvcSps full = hrdSps();
    full.profileIdc = 244;
    full.chromaFormatIdc = 3;
    full.separateColourPlanes = full.hasScalingLists = full.hasCropping = full.mbAdaptiveFrameField = true;
    full.frameMbsOnly = false;
    full.scalingLists.present[11] = full.scalingLists.present[0] = true;
    full.scalingLists.deltas[0][1] = -9;
    full.scalingLists.deltas[11][63] = 5;
    full.picOrderCntType = 1;
    full.refFramesInCycle = 3;
    full.offsetsForRefFrame = {-7, 0, 0x7FFFFFFF};
    full.vui.hasRestriction = full.vui.hasChromaLocation = full.vui.hasVclHrd = full.vui.hasSignalType = true;
    full.vui.vclHrd = full.vui.nalHrd;
    full.vui.hasAspectRatio = true;
    full.vui.aspectRatioIdc = 255;
    full.vui.sarWidth = 40;
    full.vui.maxDecFrameBuffering = 16;
    const Bytes written = writeAvcSps(full);
    const AvcSps read = parseAvcSps(written);
    EXPECT_EQ(writeAvcSps(read), written);
    EXPECT_EQ(read.vui.maxDecFrameBuffering, 16U);
    EXPECT_EQ(read.offsetsForRefFrame, full.offsetsForRefFrame);
    EXPECT_EQ(read.scalingLists.deltas[11][63], 5);
}

TEST_F(H264Test, SurvivesDamagedUnits) {
    for (const char* name : {"h264_bframes_hrd.264", "h264_interlaced_hrd.264"}) {
        const auto parser = createNALBuilder(StreamType::h264);
        const auto units = unitsOf(*parser, sampleStream(name), [] { return 1U << 20; });
        abuse(StreamType::h264, units, 11);
        for (const Bytes& unit : units) {
            for (std::size_t size = 0; size < std::min<std::size_t>(unit.size(), 100); ++size)
                packetizer.give(Bytes(unit.begin(), unit.begin() + static_cast<std::ptrdiff_t>(size)));
        }
    }
}

}  // namespace
}  // namespace mvrtpfec::test
