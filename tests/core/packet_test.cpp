#include <gtest/gtest.h>

#include "tests/shared/packets.h"

namespace mvrtpfec {
namespace {

Bytes packetOf(std::uint8_t byte0, std::uint8_t byte1, std::size_t length) {
    Bytes packet(length, 0x5a);
    packet[0] = byte0;
    packet[1] = byte1;
    return packet;
}

bool isValid(const Bytes& bytes) {
    return RtpPacket(bytes.data(), bytes.size()).isValid();
}

TEST(RtpPacket, validityDependsOnTypeLengthAndFirstByte) {
    struct Case {
        std::uint8_t byte0, byte1;
        std::size_t length;
        bool valid;
    };
    const Case cases[] = {
        {0x80, 33, 11, false},         {0x80, 33, 12, true},    {0x80, 33, 1400, true},
        {0x80, 33, 1401, false},       {0x80, 96, 27, false},   {0x80, 96, 28, true},
        {0x80, 96, 1416, true},        {0x80, 96, 1417, false}, {0x80, 33 | 0x80, 1328, true},
        {0x80, 96 | 0x80, 1344, true}, {0x80, 34, 1328, false}, {0x80, 34, 12, false},
        {0xa0, 33, 1328, false},       {0x90, 33, 1328, false}, {0x81, 33, 1328, false},
        {0x88, 33, 1328, false},       {0x40, 33, 1328, false}, {0xc0, 33, 1328, false},
        {0x00, 33, 1328, false},       {0xa0, 96, 1328, false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(isValid(packetOf(c.byte0, c.byte1, c.length)), c.valid)
            << int{c.byte0} << ' ' << int{c.byte1} << ' ' << c.length;
}

TEST(RtpPacket, resizeKeepsTheStartAndZeroesWhatIsNew) {
    EXPECT_EQ(bytesOf(RtpPacket().view), Bytes(1416, 0)) << "an empty one";
    for (const std::size_t size : {std::size_t{1000}, std::size_t{3000}}) {
        const Bytes bytes = packetOf(0x80, 33, size);
        RtpPacket packet(bytes.data(), size);
        packet.resize(100);
        packet.resize(120);
        ASSERT_EQ(packet.bufferSize(), 120u);
        EXPECT_EQ(Bytes(packet.view.data, packet.view.data + 100), Bytes(bytes.begin(), bytes.begin() + 100));
        EXPECT_EQ(Bytes(packet.view.data + 100, packet.view.data + 120), Bytes(20, 0));
    }
}

/// Three packets of 14, 16 and 13 bytes across the wrap, markers 1, 0, 1.
const Bytes first = {0x80, 0xa1, 0xff, 0xfe, 0x01, 0x02, 0x03, 0x04, 0xde, 0xad, 0xbe, 0xef, 0x11, 0x22};
const Bytes second = {0x80, 0x21, 0xff, 0xff, 0x01, 0x02, 0x03, 0x84,
                      0xde, 0xad, 0xbe, 0xef, 0x0f, 0x0f, 0x0f, 0xf0};
const Bytes third = {0x80, 0xa1, 0x00, 0x00, 0x11, 0x02, 0x03, 0x04, 0xde, 0xad, 0xbe, 0xef, 0xa0};

TEST(FecPacket, columnPacketByteForByte) {
    const Bytes expected = {0x80, 0x60, 0x12, 0x34, 0x01, 0x02, 0x03, 0x04,   // own number, first's timestamp
                            0x00, 0x00, 0x00, 0x00, 0xff, 0xfe, 0x00, 0x13,   // no SSRC; base, lengths
                            0xa1, 0x00, 0x00, 0x00, 0x11, 0x02, 0x03, 0x84,   // E and types, mask, timestamps
                            0x00, 0x07, 0x03, 0x00, 0xbe, 0x2d, 0x0f, 0xf0};  // column, offset, NA, payload
    EXPECT_EQ(fecPacketOver({first, second, third}, FecKind::column, 7, 0x1234), expected);
}

TEST(FecPacket, rowPacketOverOnePacketIsItsCopyBehindTheHeader) {
    const Bytes expected = {0x80, 0xe0, 0x00, 0x01, 0x01, 0x02, 0x03, 0x04, 0x00, 0x00,
                            0x00, 0x00, 0xff, 0xfe, 0x00, 0x0e, 0xa1, 0x00, 0x00, 0x00,
                            0x01, 0x02, 0x03, 0x04, 0x40, 0x01, 0x01, 0x00, 0x11, 0x22};
    EXPECT_EQ(fecPacketOver({first}, FecKind::row, 1, 1), expected);
}

TEST(FecPacket, protectedRangeWraps) {
    const auto lastOf = [](std::uint16_t base, std::uint8_t offset, std::uint8_t count) {
        return protectedRange(viewOf(fecPacketNaming(base, FecKind::column, offset, count))).last;
    };
    EXPECT_EQ(lastOf(65530, 5, 4), 9);
    EXPECT_EQ(lastOf(65530, 1, 6), 65535);
    EXPECT_EQ(lastOf(100, 0, 20), 100);
    EXPECT_EQ(lastOf(100, 255, 255), 64870);
    EXPECT_EQ(lastOf(3, 5, 0), 65534);
}

TEST(FecPacket, rangeContainsItsMembersAlone) {
    const auto membersOf = [](std::uint8_t offset, std::uint8_t count) {
        const ProtectedRange range =
            protectedRange(viewOf(fecPacketNaming(65530, FecKind::column, offset, count)));
        std::vector<std::uint32_t> members;
        for (std::uint32_t n = 0; n < 65536; ++n)
            if (range.contains(static_cast<std::uint16_t>(n))) members.push_back(n);
        return members;
    };
    EXPECT_EQ(membersOf(5, 4), (std::vector<std::uint32_t>{4, 9, 65530, 65535}));
    EXPECT_EQ(membersOf(0, 4), std::vector<std::uint32_t>{65530});
    EXPECT_TRUE(membersOf(0, 0).empty());
}

}  // namespace
}  // namespace mvrtpfec
