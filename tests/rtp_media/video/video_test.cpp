#include <gtest/gtest.h>

#include "rtp_media/video/nal_builder_mpeg2.h"
#include "rtp_media/video/nal_builder_start_code_based.h"
#include "tests/rtp_media/chain/collected_packets.h"

namespace mvrtpfec::test {
namespace {

using Sizes = std::vector<std::size_t>;

/// The units in one sample, after a look that every other cut gives the same.
std::vector<Bytes> unitsHowever(StreamType type, const Bytes& stream) {
    const auto parse = [&](auto nextSize) {
        const auto parser = createNALBuilder(type);
        return unitsOf(*parser, stream, nextSize);
    };
    const auto whole = parse([&] { return stream.size() + 1; });
    EXPECT_EQ(parse([] { return 1U; }), whole);
    std::mt19937 random(3);
    EXPECT_EQ(parse([&] { return 1 + random() % 7; }), whole);
    return whole;
}

TEST(StartPatterns, AreFoundAcrossSamplesAndByTheirMask) {
    using Units = std::vector<Bytes>;
    EXPECT_EQ(unitsHowever(StreamType::h263, {7, 0, 0, 0x83, 1, 0, 0, 0x7F, 0, 0, 0, 0x80, 2, 0, 0}),
              (Units{{0, 0, 0x83, 1, 0, 0, 0x7F, 0}, {0, 0, 0x80, 2, 0, 0}}));
    EXPECT_EQ(unitsHowever(StreamType::mpeg4Visual, {0, 0, 1, 0xB0, 3, 0, 0, 1, 0xB6, 9}),
              (Units{{0, 0, 1, 0xB0, 3}, {0, 0, 1, 0xB6, 9}}));
    EXPECT_EQ(unitsHowever(StreamType::proRes,
                           {1, 0, 0, 0, 9, 'i', 'c', 'p', 'f', 5, 0, 0, 0, 8, 'i', 'c', 'p', 'f'}),
              (Units{{0, 0, 0, 9, 'i', 'c', 'p', 'f', 5}, {0, 0, 0, 8, 'i', 'c', 'p', 'f'}}))
        << "a frame begins with its size";
    EXPECT_EQ(unitsHowever(StreamType::proRes, {'i', 'c', 'p', 'f', 'i', 'c', 'p', 'f', 1}),
              (Units{{'i', 'c', 'p', 'f', 'i', 'c', 'p', 'f', 1}}));
    EXPECT_TRUE(unitsHowever(StreamType::mpeg4Visual, {0, 0, 2, 0, 0, 1}).empty());
    // What begins at the same byte later, or ends where a longer one ended, is the same match.
    static constexpr std::array<std::uint8_t, 1> shortPrefix{0};
    static constexpr std::array<std::uint8_t, 2> longPrefix{0, 0};
    static constexpr std::array<StartPattern, 2> both{{{shortPrefix, 1, 0xFF}, {longPrefix, 1, 0xFF}}};
    struct Both : NALBuilderStartPatterns {
        Both() : NALBuilderStartPatterns(both) {}
        std::unique_ptr<NAL> takeUnit(UnitCutter& cutter, std::size_t size) const override {
            return cutter.take<NALH263>(size);
        }
    } parser;
    EXPECT_EQ(unitsOf(parser, Bytes{0, 0, 1, 5, 0, 1, 6}, [] { return 1U; }),
              (Units{{0, 0, 1, 5}, {0, 1, 6}}));
}

TEST(Mpeg2Video, CutsIntoPicturesWithTheHeadersInFront) {
    const Bytes sequence{0, 0, 1, 0xB3, 1};
    const Bytes group{0, 0, 1, 0xB8, 2};
    const Bytes picture{0, 0, 1, 0x00, 3, 0, 0, 1, 0xB5, 4, 0, 0, 1, 0x01, 5};
    const Bytes end{0, 0, 1, 0xB7};
    Bytes stream{9, 9};
    const auto add = [&](std::initializer_list<Bytes> parts) {
        Bytes unit;
        for (const auto& part : parts) unit.insert(unit.end(), part.begin(), part.end());
        stream.insert(stream.end(), unit.begin(), unit.end());
        return unit;
    };
    const std::vector<Bytes> units{add({sequence, group, picture}), add({picture}),
                                   add({group, picture, end}), add({sequence, picture})};
    EXPECT_EQ(unitsHowever(StreamType::mpeg2Video, stream), units);
}

TEST(H263, PutsThePayloadHeaderInThePlaceOfTheStartCodesZeros) {
    Packetizer packetizer(StreamType::h263);
    const auto picture = [](std::size_t size, std::uint8_t format) {
        Bytes bytes(size, 0x11);
        bytes[0] = bytes[1] = 0;
        bytes[2] = 0x80;
        bytes[4] = static_cast<std::uint8_t>(format << 2);
        return bytes;
    };
    packetizer.give(picture(100, 2));     // no time
    packetizer.give(picture(100, 7), 1);  // an extended type
    packetizer.give(picture(100, 6), 1);  // no size to describe
    packetizer.give({0, 0, 0x80, 0}, 1);
    EXPECT_TRUE(packetizer.take().empty());
    packetizer.give(picture(1302, 2), 9000, true);
    const auto one = packetizer.take();
    EXPECT_EQ(payloadSizes(one), Sizes{1300});
    EXPECT_TRUE(one[0].marker && one[0].discontinuity);
    EXPECT_EQ(one[0].prefix, (Bytes{4, 0}));
    EXPECT_EQ(one[0].payload[0], 0x80);
    packetizer.give(picture(1303, 2), 9000, true);
    const auto two = packetizer.take();
    EXPECT_EQ(payloadSizes(two), (Sizes{1300, 1}));
    EXPECT_TRUE(!two[0].marker && two[1].marker && !two[1].discontinuity);
    EXPECT_EQ(two[1].prefix, (Bytes{0, 0}));
    EXPECT_EQ(packetizer.builder().sdpAttributes(),
              "a=rtpmap:96 H263-2000/90000\\a=fmtp:96 PROFILE=0; LEVEL=45;\\a=X-predecbufsize:40960\\"
              "a=X-initpredecbufperiod:229500\\a=X-initpostdecbufperiod:229500\\a=X-decbyterate:16000\\"
              "a=framesize:96 176-144");
}

TEST(Mpeg4Visual, SendsPlanesAndDescribesTheHeaders) {
    Packetizer packetizer(StreamType::mpeg4Visual);
    Bytes plane(1301, 0x22);
    plane[0] = plane[1] = 0;
    plane[2] = 1;
    plane[3] = 0xB6;
    packetizer.give({0, 0, 1, 0xB5, 9});  // no time, so not even described
    packetizer.give({0, 0, 1, 0xB0, 0xF3}, 1);
    packetizer.give({0, 0, 1, 0xB2, 'x'}, 1);  // user data
    packetizer.give({0, 0, 1, 0x21, 7}, 1);    // another layer
    packetizer.give({0, 0, 1, 0x20, 8}, 1);
    packetizer.give({0xB6, 0xB6}, 1);  // no start code
    EXPECT_TRUE(packetizer.take().empty());
    packetizer.give(plane, 9000, true);
    const auto parts = packetizer.take();
    EXPECT_EQ(payloadSizes(parts), (Sizes{1300, 1}));
    EXPECT_TRUE(!parts[0].marker && parts[0].discontinuity && parts[1].marker && !parts[1].discontinuity);
    EXPECT_EQ(parts[0].payload[3], 0xB6);
    EXPECT_EQ(parts[1].sequence, 1U);
    const std::string described =
        "a=rtpmap:96 MP4V-ES/90000\\a=fmtp:96 profile-level-id=243; config=000001b0f30000012008";
    EXPECT_EQ(packetizer.builder().sdpAttributes(), described);
    packetizer.give({0, 0, 1, 0x20, 5}, 2);
    packetizer.give({0, 0, 1, 0xB7}, 2);
    EXPECT_EQ(payloadSizes(packetizer.take()), Sizes{4}) << "codes above a plane's are sent";
    EXPECT_EQ(packetizer.builder().sdpAttributes(), described);
}

TEST(Mpeg4Visual, KeepsNoEndlessHeaders) {
    Packetizer packetizer(StreamType::mpeg4Visual);
    Bytes header(20'000, 0x33);
    header[0] = header[1] = 0;
    header[2] = 1;
    header[3] = 0xB5;
    for (int i = 0; i < 100; ++i) packetizer.give(header, i);
    packetizer.give({0, 0, 1, 0xB0, 1}, 100);
    packetizer.give({0, 0, 1, 0xB6, 1}, 101);
    EXPECT_LT(packetizer.builder().sdpAttributes().size(), 70'000U);
}

TEST(VideoPacketizers, SurviveDamagedUnits) {
    for (const auto& [type, name] :
         {std::pair{StreamType::h263, "h263.263"}, std::pair{StreamType::mpeg4Visual, "mpeg4.m4v"}}) {
        const auto parser = createNALBuilder(type);
        abuse(type, unitsOf(*parser, sampleStream(name), [] { return 1U << 20; }), 13);
    }
}

}  // namespace
}  // namespace mvrtpfec::test
