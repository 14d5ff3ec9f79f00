#include "rtp_media/audio/rtp_packet_builder_aac_latm_audio.h"

#include <gtest/gtest.h>

#include "rtp_media/audio/nal_aac_latm_loas.h"
#include "rtp_media/audio/nal_ac3.h"
#include "rtp_media/audio/nal_builder_aac_latm_loas_audio.h"
#include "tests/rtp_media/audio/audio_frames.h"

namespace mvrtpfec::test {
namespace {

/// Any AudioMuxElement with a StreamMuxConfig.
struct Element {
    std::uint32_t version = 0;
    Fields audio = lcConfig();
    std::vector<Bytes> subframes{{1, 2, 3}};
    std::optional<Bytes> otherData = std::nullopt;
    bool crc = false;
    std::uint32_t fill = 0;  ///< bits behind the AudioSpecificConfig, version 1

    static void appendLatmValue(Bit_Set& bits, std::uint32_t value) {
        bits.append(1, 2);
        bits.append(value, 16);
    }

    Bit_Set config() const {
        Bit_Set bits;
        bits.append(version, 1);
        if (version == 1) {
            bits.append(0, 1);
            appendLatmValue(bits, 500);
        }
        const auto furtherSubframes = static_cast<std::uint32_t>(subframes.size() - 1);
        appendFields(bits, {{1, 1}, {furtherSubframes, 6}, {0, 4}, {0, 3}});
        Bit_Set asc;
        appendFields(asc, audio);
        if (version == 1) appendLatmValue(bits, static_cast<std::uint32_t>(asc.size()) + fill);
        appendBits(bits, asc);
        bits.append(0, fill);
        appendFields(bits, {{0, 3}, {0xFF, 8}, {otherData ? 1 : 0, 1}});
        if (otherData) appendOtherDataLength(bits);
        bits.append(crc ? 1 : 0, 1);
        if (crc) bits.append(0x5A, 8);
        return bits;
    }

    void appendOtherDataLength(Bit_Set& bits) const {
        const auto length = static_cast<std::uint32_t>(otherData->size() * 8);
        if (version == 1) return appendLatmValue(bits, length);
        appendFields(bits, {{1, 1}, {length >> 8, 8}, {0, 1}, {length & 0xFF, 8}});
    }

    Bit_Set payload() const {
        Bit_Set bits;
        for (const Bytes& subframe : subframes) {
            for (std::size_t n = subframe.size(); n >= 255; n -= 255) bits.append(255, 8);
            bits.append(static_cast<std::uint32_t>(subframe.size() % 255), 8);
            for (const std::uint8_t byte : subframe) bits.append(byte, 8);
        }
        if (otherData) {
            for (const std::uint8_t byte : *otherData) bits.append(byte, 8);
        }
        return bits;
    }

    Bytes loas(bool withConfig = true) const {
        Bit_Set element;
        element.append(!withConfig);
        if (withConfig) appendBits(element, config());
        appendBits(element, payload());
        return loasFrame(element);
    }
};

class LatmPacketizer : public ::testing::Test {
protected:
    void input(const Bytes& bytes, bool timed = true) {
        packetizer.onNAL(unitOf<NALAACLATMLOAS>(bytes, timed));
    }

    CollectedPackets out;
    RTPPacketBuilderAACLATMAudio packetizer{96, 5000, &out};
};

TEST_F(LatmPacketizer, SendsTheElementWithoutItsConfiguration) {
    input(Element{}.loas(false));
    EXPECT_TRUE(out.packets.empty()) << "no configuration yet";
    input(Element{}.loas());
    input(Element{.subframes = {Bytes(300, 9)}}.loas(false));
    packetizer.onEndOfStream();

    // 0 1 000000 0000 000 | 00010 0011 0010 000 | 000 11111111 0 0, zero-padded
    EXPECT_EQ(packetizer.sdpAttributes(),
              "a=rtpmap:96 MP4A-LATM/48000/2\\a=fmtp:96 profile-level-id=15; object=2; cpresent=0; "
              "config=400023203FC0");
    ASSERT_EQ(out.packets.size(), 2U);
    EXPECT_EQ(out.body(0), (Bytes{3, 1, 2, 3}));
    EXPECT_EQ(out.body(1), joined({{255, 45}, Bytes(300, 9)}));
    EXPECT_TRUE(out.packets[0]->marker());
    EXPECT_EQ(out.packets[0]->clockRate(), 48000U);
    EXPECT_EQ(out.packets[0]->pts(), 90000U);
    EXPECT_EQ(out.packets[0]->chunks()[0]->streamType(), StreamType::aacLatm);
    EXPECT_EQ(packetizer.getMaxPacketRate(), 47U);
    EXPECT_EQ(out.endsOfStream, 1);
}

TEST(LatmParser, CountsOnWhereSamplesBearNoTime) {
    NALBuilderAACLATMLOASAudio parser;
    CollectedUnits collected;
    parser.setListener(&collected);
    const auto give = [&](const std::vector<Bytes>& frames, REFERENCE_TIME time = -1) {
        const auto sample = sampleOf(joined(frames));
        if (time >= 0) sample->SetTime(&time, nullptr);
        parser.input(sample.p);
    };
    Bit_Set beyond;
    appendFields(beyond, {{1, 1}, {200, 8}, {0, 23}});
    const Bytes damaged = loasFrame(beyond);
    const Bytes own = Element{}.loas();
    const Bytes next = Element{}.loas(false);
    give({next, own, next, damaged, next});
    give({next, next}, 10'000'000);
    give({next, Element{.subframes = {{1}, {2}}}.loas(), next});
    parser.flush();
    give({own});

    std::vector<std::int64_t> times;
    for (const auto& unit : collected.units) times.push_back(unit->timing.hasPts ? unit->timing.pts : -1);
    EXPECT_EQ(times, (std::vector<std::int64_t>{-1, 0, 213'333, 426'667, 640'000, 10'000'000, 10'000'000,
                                                10'426'667, 10'640'000, 11'066'667, 0}));
}

TEST_F(LatmPacketizer, SendsSubframesAndOtherDataOfEveryShape) {
    const std::vector<Bytes> subframes{{1}, {}, Bytes(255, 7), Bytes(511, 8)};
    const Fields sbr{{5, 5}, {6, 4}, {2, 4}, {3, 4}, {2, 5}, {0, 3}};
    for (const std::uint32_t version : {0U, 1U}) {
        for (const bool crc : {false, true}) {
            const Element element{version, sbr, subframes, Bytes(40, 0xA5), crc, version * 5};
            const Bytes expected = element.payload().bytes();
            const auto before = out.packets.size();
            input(element.loas());
            input(element.loas(false));
            ASSERT_EQ(out.packets.size(), before + 2) << version << crc;
            EXPECT_EQ(out.body(before), expected);
            EXPECT_EQ(out.body(before + 1), expected);
        }
    }
    EXPECT_EQ(out.packets[0]->clockRate(), 24000U);
}

TEST_F(LatmPacketizer, DropsWhatItCannotSend) {
    const Bytes good = Element{}.loas();
    input(good, false);
    input({good.begin(), good.end() - 1});
    input({0x56, 0xE0, 2, 0x20, 0});
    input(Element{.audio = {{2, 5}, {15, 4}, {48000, 24}, {2, 4}, {0, 3}}}.loas());
    input(Element{.audio = {{2, 5}, {14, 4}, {2, 4}, {0, 3}}}.loas());
    input(Element{.audio = {{8, 5}, {3, 4}, {2, 4}, {0, 32}}}.loas());
    packetizer.onNAL(unitOf<NALAC3>(good));
    EXPECT_TRUE(out.packets.empty());
    EXPECT_FALSE(packetizer.sdpReady());

    const auto withLayout = [](std::uint32_t framing, std::uint32_t programs, std::uint32_t layers,
                               std::uint32_t frameLengthType) {
        Bit_Set element;
        appendFields(element, {{0, 2}, {framing, 1}, {0, 6}, {programs, 4}, {layers, 3}});
        appendFields(element, lcConfig());
        appendFields(element, {{frameLengthType, 3}, {0xFF, 8}, {0, 2}, {1, 8}, {9, 8}});
        return loasFrame(element);
    };
    for (const Bytes& unsupported :
         {withLayout(0, 0, 0, 0), withLayout(1, 1, 0, 0), withLayout(1, 0, 1, 0), withLayout(1, 0, 0, 1)})
        input(unsupported);
    EXPECT_TRUE(out.packets.empty());
    input(withLayout(1, 0, 0, 0));
    EXPECT_EQ(out.packets.size(), 1U);
}

/// audioMuxVersion and audioMuxVersionA set.
Bytes reservedVersion() {
    return loasFrame([] {
        Bit_Set element;
        appendFields(element, {{0, 1}, {3, 2}, {0, 32}});
        return element;
    }());
}

TEST(LatmPacketizerDeathTest, AbortsOnTheReservedVersionAndTheParserThrows) {
    const Bytes frame = reservedVersion();
    EXPECT_THROW(parseLoasFrame(frame, nullptr), Mpeg4AudioException);
    CollectedPackets out;
    RTPPacketBuilderAACLATMAudio packetizer(96, 5000, &out);
    EXPECT_DEATH(packetizer.onNAL(unitOf<NALAACLATMLOAS>(frame, false)), "");
}

/// Hostile copies of good units: whatever becomes of them, nothing is read beyond them and nothing thrown.
TEST_F(LatmPacketizer, TakesEveryTruncationAndBitFlip) {
    const Bytes good = Element{0, lcConfig(), {{1}, Bytes(20, 0xFF)}, Bytes(9, 3), true}.loas();
    const Bytes version1 = Element{1, lcConfig(), {{1}, Bytes(20, 0xFF)}, Bytes(9, 3), true, 3}.loas();
    const auto reserved = [](const Bytes& bytes) { return (bytes[3] & 0xE0) == 0x60; };
    for (const Bytes& unit : {good, version1}) {
        for (std::size_t size = 0; size < unit.size(); ++size) {
            Bytes cut(unit.begin(), unit.begin() + static_cast<std::ptrdiff_t>(size));
            input(cut);
            if (size < 6) continue;
            cut[1] = 0xE0;
            cut[2] = static_cast<std::uint8_t>(size - 3);
            input(cut);
        }
        for (std::size_t bit = 0; bit < unit.size() * 8; ++bit) {
            Bytes flipped = unit;
            flipped[bit / 8] = static_cast<std::uint8_t>(flipped[bit / 8] ^ 0x80U >> bit % 8);
            if (!reserved(flipped)) input(flipped);
        }
        for (const auto& packet : out.packets) EXPECT_LE(packet->chunks()[0]->size(), unit.size());
    }
}

}  // namespace
}  // namespace mvrtpfec::test
