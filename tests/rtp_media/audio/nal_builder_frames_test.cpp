#include <array>
#include <functional>
#include <stdexcept>

#include <gtest/gtest.h>

#include "rtp_media/audio/nal_builder_aac_adts_audio.h"
#include "rtp_media/audio/nal_builder_aac_latm_loas_audio.h"
#include "rtp_media/audio/nal_builder_aac_raw_audio.h"
#include "rtp_media/audio/nal_builder_ac3_audio.h"
#include "rtp_media/audio/nal_builder_mpeg1_audio.h"
#include "tests/rtp_media/audio/audio_frames.h"

namespace mvrtpfec::test {
namespace {

/// Random bytes in which no frame of any format can begin.
Bytes randomBytes(std::mt19937& random, std::size_t size) {
    Bytes bytes(size);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(0x60 + random() % 16);
    return bytes;
}

Bytes padded(Bytes header, std::size_t size, std::mt19937& random) {
    return joined({header, randomBytes(random, size - header.size())});
}

struct Format {
    const char* name;
    StreamType type;
    std::function<std::unique_ptr<NALBuilder>()> parser;
    std::function<Bytes(std::mt19937&)> frame;
    std::vector<Bytes> falseStarts;  ///< headers that are none; no frame of the format begins in them
};

template <class Parser>
std::unique_ptr<NALBuilder> make() {
    return std::make_unique<Parser>();
}

Bytes someLoasFrame(std::mt19937& random) {
    const auto size = static_cast<std::uint32_t>(random() % 300);
    return joined({packed({{0x2B7, 11}, {size, 13}}), randomBytes(random, size)});
}

Bytes someAc3Frame(std::mt19937& random) {
    // 44.1 kHz, 32 kbit/s, long form: 70 words; E-AC-3 of 40 words.
    if (random() % 2 != 0) return padded({0x0B, 0x77, 0x61, 0x61, 0x41, 0x40}, 140, random);
    return padded({0x0B, 0x77, 0x00, 39, 0x0F, 0x80}, 80, random);
}

Bytes someMpeg1Frame(std::mt19937& random) {
    // Layer II, 32 kbit/s, 48 kHz, padded: 97 bytes; layer I, 32 kbit/s, 32 kHz, padded: 52.
    if (random() % 2 != 0) return padded({0xFF, 0xFD, 0x16, 0x60}, 97, random);
    return padded({0xFF, 0xFE, 0x1A, 0x60}, 52, random);
}

std::vector<Format> formats() {
    return {
        {"ADTS",
         StreamType::aacAdts,
         make<NALBuilderAACADTSAudio>,
         [](auto& random) { return adtsFrame(randomBytes(random, random() % 300), random() % 2 != 0); },
         {{0xFF}, {0xFF, 0xF3}, {0xFF, 0xF0, 0x50, 0x80, 0x01, 0x1F}, {0xFF, 0xF1, 0x50, 0x80, 0x00, 0xC0}}},
        {"LOAS",
         StreamType::aacLatm,
         make<NALBuilderAACLATMLOASAudio>,
         someLoasFrame,
         {{0x56}, {0x56, 0x56, 0x20}}},
        {"AC-3",
         StreamType::ac3,
         make<NALBuilderAC3Audio>,
         someAc3Frame,
         {{0x0B},
          {0x0B, 0x0B, 0x78},
          {0x0B, 0x77, 1, 1, 0xC0, 0x40},
          {0x0B, 0x77, 1, 1, 0x26, 0x40},
          {0x0B, 0x77, 1, 1, 1, 0x88},
          {0x0B, 0x77, 0xC0, 9, 0, 0x80},
          {0x0B, 0x77, 0, 9, 0xF0, 0x80},
          {0x0B, 0x77, 0, 1, 0, 0x80}}},
        {"MPEG-1",
         StreamType::mpeg1Audio,
         make<NALBuilderMPEG1Audio>,
         someMpeg1Frame,
         {{0xFF, 0xFF, 0xF0},
          {0xFF, 0xFD, 0x06, 0},
          {0xFF, 0xFD, 0xF0, 0},
          {0xFF, 0xFC, 0x1C, 0},
          {0xFF, 0xFB, 0x90}}},
    };
}

TEST(NALBuilderFrames, FindsTheFramesAmongJunkHoweverTheStreamIsCut) {
    std::mt19937 random(7);
    for (const Format& format : formats()) {
        const auto& junk = format.falseStarts;
        for (int round = 0; round < 60; ++round) {
            std::vector<Bytes> frames;
            Bytes stream;
            const auto add = [&](const Bytes& bytes) {
                stream.insert(stream.end(), bytes.begin(), bytes.end());
            };
            for (std::size_t i = 0; i < 12; ++i) {
                if (random() % 2 != 0) add(junk[random() % junk.size()]);
                if (random() % 4 == 0) add(randomBytes(random, random() % 9));
                frames.push_back(format.frame(random));
                add(frames.back());
            }
            const Bytes unfinished = format.frame(random);
            const auto wholeParser = format.parser();
            ASSERT_EQ(unitsOf(*wholeParser, stream, [&] { return stream.size(); }), frames) << format.name;
            add({unfinished.begin(), unfinished.end() - 1});
            const auto parser = format.parser();
            ASSERT_EQ(unitsOf(*parser, stream, [] { return 1U; }), frames) << format.name;
            // The same parser again: a flush leaves nothing behind.
            ASSERT_EQ(unitsOf(*parser, stream, [&] { return 1 + random() % 40; }), frames) << format.name;
        }
    }
}

TEST(NALBuilderFrames, TimesAFrameByTheSampleOfItsFirstByte) {
    std::mt19937 random(8);
    for (const Format& format : formats()) {
        const Bytes first = format.frame(random);
        const Bytes second = format.frame(random);
        const Bytes stream = joined({first, second});
        const auto parser = format.parser();
        CollectedUnits collected;
        parser->setListener(&collected);
        REFERENCE_TIME time = 0;
        const auto feed = [&](std::size_t from, std::size_t to) {
            const auto sample = sampleOf(std::span(stream).subspan(from, to - from));
            sample->SetTime(&(time += 100), nullptr);
            parser->input(sample.p);
        };
        feed(0, 1);
        feed(1, first.size() + 1);
        feed(first.size() + 1, stream.size());
        parser->flush();
        ASSERT_EQ(collected.units.size(), 2U) << format.name;
        EXPECT_EQ(collected.units[0]->streamType(), format.type);
        EXPECT_EQ(collected.units[0]->timing.pts, 100) << format.name;
        EXPECT_EQ(collected.units[1]->timing.pts, 200) << format.name;
        EXPECT_EQ(collected.endsOfStream, 1);
    }
}

TEST(NALBuilderFrames, HoldsNoSampleItDoesNotNeedAndSurvivesAThrowingListener) {
    struct Thrower : NALListener {
        void onNAL(std::unique_ptr<NAL>) override { throw std::runtime_error("full"); }
        void onEndOfStream() override {}
    } thrower;
    NALBuilderAACADTSAudio parser;
    const auto held = [](SimpleMediaData& sample) {
        sample.AddRef();
        return sample.Release() > 1;
    };
    const Bytes frame = adtsFrame(Bytes(20, 1));
    const auto junk = sampleOf(Bytes{1, 2, 3});
    const auto begin = sampleOf(std::span(frame).first(10));
    const auto end = sampleOf(std::span(frame).subspan(10));
    parser.input(junk.p);
    EXPECT_FALSE(held(*junk.p));
    parser.input(begin.p);
    EXPECT_TRUE(held(*begin.p));
    parser.setListener(&thrower);
    EXPECT_THROW(parser.input(end.p), std::runtime_error);
    EXPECT_FALSE(held(*begin.p));
    EXPECT_EQ(unitsOf(parser, joined({frame, frame}), [] { return 9U; }), (std::vector<Bytes>{frame, frame}));
}

TEST(NALBuilderAACRawAudio, LosesOfADamagedSampleWhatIsDamagedAndOfTheNextNothing) {
    const Bytes good = rawRecord({0x11, 0x90}, 16, {1, 2, 3});
    const auto withByte = [&](std::size_t at, std::uint8_t value) {
        Bytes damaged = good;
        damaged[at] = value;
        return damaged;
    };
    const Bytes cut(good.begin(), good.end() - 1);
    const Bytes thirteen = rawRecord({0x12, 0x10}, 13, {4});
    const Bytes large = rawRecord(Bytes(2000, 1), 16000, Bytes(70000, 7));
    const struct {
        Bytes sample;
        std::vector<Bytes> units;
    } cases[] = {
        {good, {good}},
        {cut, {}},
        {withByte(15, 0xFF), {}},  // the configuration's length
        {withByte(21, 40), {}},    // the frame's: longer than the sample, and shorter
        {withByte(21, 2), {}},
        {joined({good, {0xEE}}), {}},
        {joined({good, thirteen, good}), {good, thirteen, good}},
        {joined({good, withByte(21, 2), good}), {good, good}},
        {joined({good, withByte(21, 30), good}), {good, good}},
        {joined({Bytes(40, 0xEE), good, good, cut}), {good, good}},
        {large, {large}},
    };
    for (const auto& [sample, units] : cases) {
        NALBuilderAACRawAudio parser;
        std::vector<Bytes> expected = units;
        expected.push_back(good);
        std::size_t size = sample.size();
        EXPECT_EQ(unitsOf(parser, joined({sample, good}), [&] { return std::exchange(size, good.size()); }),
                  expected)
            << "case " << &sample - &cases[0].sample;
    }
}

TEST(NALBuilderAACRawAudio, TakesTheRecordsTimeWhereTheSampleHasNone) {
    NALBuilderAACRawAudio parser;
    CollectedUnits collected;
    parser.setListener(&collected);
    const auto untimed =
        sampleOf(joined({rawRecord({0x11, 0x90}, 16, {1}, -7), rawRecord({0x11, 0x90}, 16, {1}, 0)}));
    parser.input(untimed.p);
    const auto timed = sampleOf(rawRecord({0x11, 0x90}, 16, {1}, 77));
    REFERENCE_TIME start = 5;
    timed->SetTime(&start, nullptr);
    parser.input(timed.p);
    parser.input(sampleOf(rawRecord({0x11, 0x90}, 16, {1})).p);
    ASSERT_EQ(collected.units.size(), 4U);
    EXPECT_EQ(collected.units[0]->timing.hasPts, 1);
    EXPECT_EQ(collected.units[0]->timing.pts, -7);
    EXPECT_EQ(collected.units[1]->timing.hasPts, 0) << "zeros";
    EXPECT_EQ(collected.units[2]->timing.pts, 5);
    EXPECT_EQ(collected.units[3]->timing.hasPts, 0) << "ones";
}

TEST(FrameSizes, GoByTheStandardsTables) {
    const auto ac3 = [](std::uint8_t rate, std::uint8_t bsid) {
        return ac3FrameSize(std::array<std::uint8_t, 6>{0x0B, 0x77, 0x07, 0xFF, rate, bsid});
    };
    EXPECT_EQ(ac3(0x00, 0x40), 128U);   // 48 kHz, 32 kbit/s
    EXPECT_EQ(ac3(37, 0x40), 2560U);    // 640 kbit/s
    EXPECT_EQ(ac3(0x5C, 0x40), 1670U);  // 44.1 kHz, 384 kbit/s: 835 words and 836
    EXPECT_EQ(ac3(0x5D, 0x40), 1672U);
    EXPECT_EQ(ac3(0x65, 0x50), 2788U);  // 44.1 kHz, 640 kbit/s, long; bsid 10
    EXPECT_EQ(ac3(0xA4, 0x40), 3840U);  // 32 kHz, 640 kbit/s
    EXPECT_EQ(ac3(0x3F, 0x80), 4096U);  // E-AC-3, largest
    const auto mpeg1 = [](std::uint8_t second, std::uint8_t third) {
        return mpeg1AudioFrameSize(std::array<std::uint8_t, 4>{0xFF, second, third, 0});
    };
    EXPECT_EQ(mpeg1(0xFD, 0xC0), 835U);   // layer II, 256 kbit/s, 44.1 kHz
    EXPECT_EQ(mpeg1(0xFC, 0xE6), 1153U);  // layer II, 384 kbit/s, 48 kHz, padded
    EXPECT_EQ(mpeg1(0xFF, 0xE2), 488U);   // layer I, 448 kbit/s, 44.1 kHz, padded
    EXPECT_EQ(mpeg1(0xFB, 0x90), 417U);   // layer III, 128 kbit/s, 44.1 kHz
    EXPECT_EQ(mpeg1(0xFB, 0x92), 418U);
    EXPECT_EQ(mpeg1(0xF9, 0x90), 0U);  // layer reserved
}

}  // namespace
}  // namespace mvrtpfec::test
