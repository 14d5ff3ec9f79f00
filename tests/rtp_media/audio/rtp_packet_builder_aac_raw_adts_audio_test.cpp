#include "rtp_media/audio/rtp_packet_builder_aac_raw_adts_audio.h"

#include <gtest/gtest.h>

#include "rtp_media/audio/nal_aac_adts.h"
#include "rtp_media/audio/nal_aac_raw.h"
#include "rtp_media/audio/nal_ac3.h"
#include "tests/rtp_media/audio/audio_frames.h"

namespace mvrtpfec::test {
namespace {

class AacPacketizer : public ::testing::Test {
protected:
    void adts(const Bytes& bytes, bool timed = true) { packetizer.onNAL(unitOf<NALAACADTS>(bytes, timed)); }
    void raw(const Bytes& bytes, bool timed = true) { packetizer.onNAL(unitOf<NALAACRaw>(bytes, timed)); }

    CollectedPackets out;
    RTPPacketBuilderAACRAWADTSAudio packetizer{96, 5000, &out};
};

TEST_F(AacPacketizer, SendsAnAdtsFrameWithoutItsHeader) {
    auto unit = unitOf<NALAACADTS>(adtsFrame({1, 2, 3}));
    unit->timing.discontinuity = 1;
    packetizer.onNAL(std::move(unit));
    adts(adtsFrame({4, 5, 6, 7, 8}, true));
    packetizer.onEndOfStream();

    EXPECT_EQ(
        packetizer.sdpAttributes(),
        "a=rtpmap:96 mpeg4-generic/48000/2\\a=fmtp:96 streamtype=5; profile-level-id=15; mode=AAC-hbr; "
        "config=1190; sizeLength=13; indexLength=3; indexDeltaLength=3; constantDuration=1024; object=2");
    ASSERT_EQ(out.packets.size(), 2U);
    EXPECT_EQ(out.wire(0), (Bytes{0x80, 0xE0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x00, 0x10, 0, 3 << 3, 1, 2, 3}));
    EXPECT_EQ(out.body(1), (Bytes{0x00, 0x10, 0, 5 << 3, 4, 5, 6, 7, 8})) << "the CRC isn't sent";
    EXPECT_TRUE(out.packets[1]->marker());
    EXPECT_EQ(out.packets[1]->rtpSequence(), 1U);
    EXPECT_EQ(out.packets[0]->clockRate(), 48000U);
    EXPECT_EQ(out.packets[0]->pts(), 90000U);
    EXPECT_EQ(out.packets[0]->ptsOrDts(), 90000U);
    EXPECT_TRUE(out.packets[0]->discontinuity() && !out.packets[1]->discontinuity());
    EXPECT_EQ(packetizer.getMaxPacketRate(), 47U);
    EXPECT_EQ(out.endsOfStream, 1);
}

TEST_F(AacPacketizer, DropsWhatItCannotSend) {
    adts(adtsFrame({1}, false, 3, 2, 1));  // several raw data blocks
    adts({0xFF, 0xF3, 0x50, 0x80, 1, 0, 0, 0, 0});
    adts({0xFF, 0xF1, 0x50, 0x80, 1, 0});
    packetizer.onNAL(unitOf<NALAC3>({1}));
    adts(adtsFrame({1}, false, 13));
    EXPECT_EQ(packetizer.getMaxPacketRate(), 0U);
    adts(adtsFrame({1}, false, 4), false);
    EXPECT_EQ(packetizer.getMaxPacketRate(), 44U) << "the rate is learnt from untimed frames too";
    EXPECT_FALSE(packetizer.sdpReady());

    const Bytes good = rawRecord({0x11, 0x90}, 16, {1, 2});
    raw(good, false);
    raw({good.begin(), good.end() - 1});
    raw(joined({good, {0}}));
    raw({good.begin(), good.begin() + 15});
    raw(rawRecord({0xF8, 0x90}, 16, {1, 2}));
    raw(rawRecord({0x11}, 8, {1, 2}));
    Bytes absurd = good;
    absurd[12] = 0xFF;
    raw(absurd);
    EXPECT_TRUE(out.packets.empty());
    EXPECT_FALSE(packetizer.sdpReady());
}

TEST_F(AacPacketizer, SendsTheSizeModulo8192) {
    adts(adtsFrame(Bytes(8184, 7)));
    raw(rawRecord({0x11, 0x90}, 16, Bytes(8195, 7)));
    ASSERT_EQ(out.packets.size(), 2U);
    EXPECT_EQ(out.body(0)[2], 8184 >> 5);
    EXPECT_EQ(out.body(1).size(), 8195U + 4U);
    EXPECT_EQ(out.body(1)[2], 0);
    EXPECT_EQ(out.body(1)[3], 3 << 3);
}

struct RawCase {
    Bytes config;
    std::uint32_t bits;
    const char* rtpmap;
    const char* configText;
    bool sbr;
};

TEST(AacRawPacketizer, DescribesTheConfigurationInTheSdp) {
    const RawCase cases[] = {
        {{0x11, 0x90}, 16, "mpeg4-generic/48000/2", "1190", false},
        {{0x2B, 0x11, 0x88, 0x00}, 25, "mpeg4-generic/48000/2", "2b118800", true},
        {{0xEB, 0x09, 0x88, 0x00}, 25, "mpeg4-generic/24000/2", "eb098800", true},
        {{0x13, 0x90, 0x56, 0xE5, 0xA0}, 40, "mpeg4-generic/44100/2", "139056e5a0", true},
        {packed({{2, 5}, {15, 4}, {37800, 24}, {1, 4}, {0, 3}}), 40, "mpeg4-generic/37800/1", "178049d408",
         false},
        // What can't be read to its end, or isn't supported: its first fields tell all there is to know.
        {{0x12, 0x10}, 13, "mpeg4-generic/44100/2", "1210", false},
        {{0x13, 0x90, 0x56, 0xE5, 0xA0}, 33, "mpeg4-generic/22050/2", "139056e5a0", false},
        {packed({{8, 5}, {8, 4}, {1, 4}, {0, 3}}), 16, "mpeg4-generic/16000/1", "4408", false},
    };
    for (const RawCase& c : cases) {
        CollectedPackets out;
        RTPPacketBuilderAACRAWADTSAudio packetizer(97, 5000, &out);
        packetizer.onNAL(unitOf<NALAACRaw>(rawRecord(c.config, c.bits, {9, 8, 7})));
        ASSERT_EQ(out.packets.size(), 1U) << c.rtpmap;
        EXPECT_EQ(out.body(0), (Bytes{0x00, 0x10, 0, 3 << 3, 9, 8, 7}));
        EXPECT_EQ(packetizer.sdpAttributes(),
                  std::string("a=rtpmap:97 ") + c.rtpmap +
                      "\\a=fmtp:97 streamtype=5; profile-level-id=15; mode=AAC-hbr; config=" + c.configText +
                      "; sizeLength=13; indexLength=3; indexDeltaLength=3; constantDuration=1024; object=2" +
                      (c.sbr ? "; SBR-enabled=1" : ""));
    }
}

}  // namespace
}  // namespace mvrtpfec::test
