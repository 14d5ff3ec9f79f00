#include "core/fec_packet.h"

#include <gtest/gtest.h>

#include "tests/core/packets.h"

namespace mvrtpfec::testing {
namespace {

/// Three packets of 14, 16 and 13 bytes across the wrap, markers 1, 0, 1.
const Bytes first = {0x80, 0xa1, 0xff, 0xfe, 0x01, 0x02, 0x03, 0x04, 0xde, 0xad, 0xbe, 0xef, 0x11, 0x22};
const Bytes second = {0x80, 0x21, 0xff, 0xff, 0x01, 0x02, 0x03, 0x84,
                      0xde, 0xad, 0xbe, 0xef, 0x0f, 0x0f, 0x0f, 0xf0};
const Bytes third = {0x80, 0xa1, 0x00, 0x00, 0x11, 0x02, 0x03, 0x04, 0xde, 0xad, 0xbe, 0xef, 0xa0};

Bytes sized(std::size_t length) {
    return mediaPacket(1, length);
}

Bytes marked(bool marker) {
    Bytes packet = sized(100);
    packet[1] = static_cast<std::uint8_t>(mediaPayloadType | (marker ? markerBit : 0));
    return packet;
}

std::uint16_t lengthRecovery(const Bytes& fec) {
    return readBigEndian16(fec.data() + fec_header::lengthRecovery);
}

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

TEST(FecPacket, paddingBitIsCarriedInItsOwnHeader) {
    Bytes padded = first;
    padded[0] = 0xbf;  // extension and sources must not get through
    EXPECT_EQ(fecPacketOver({padded}, FecKind::row, 1)[0], 0xa0);
    EXPECT_EQ(fecPacketOver({padded, second}, FecKind::row, 1)[0], 0xa0);
    EXPECT_EQ(fecPacketOver({padded, padded}, FecKind::row, 1)[0], 0x80);
}

TEST(FecPacket, lengthRecoveryIsTheParityOfWholePackets) {
    const Bytes fec = fecPacketOver({sized(1328), sized(200), sized(1328)}, FecKind::row, 1);
    EXPECT_EQ(fec.size(), 1344u);
    EXPECT_EQ(lengthRecovery(fec), 200);
    EXPECT_EQ(fecPacketOver({sized(12), sized(1400)}, FecKind::row, 1).size(), 1416u);
    EXPECT_EQ(fecPacketOver({sized(12)}, FecKind::row, 1).size(), 28u);
}

TEST(FecPacket, markerIsParity) {
    const auto markerOf = [](std::vector<Bytes> media) {
        return viewOf(fecPacketOver(media, FecKind::row, 1)).marker();
    };
    EXPECT_FALSE(markerOf({marked(true), marked(false), marked(true)}));
    EXPECT_TRUE(markerOf({marked(true), marked(true), marked(true)}));
}

TEST(FecPacket, timestampIsTheFirstOnesAndItsRecoveryParity) {
    std::vector<Bytes> media(3, sized(50));
    for (Bytes& packet : media) writeBigEndian32(packet.data() + 4, 1000);
    writeBigEndian32(media[2].data() + 4, 4000);
    const Bytes fec = fecPacketOver(media, FecKind::row, 1);
    EXPECT_EQ(viewOf(fec).timestamp(), 1000u);
    EXPECT_EQ(readBigEndian32(fec.data() + fec_header::timestampRecovery), 4000u);
}

/// Such a packet has its payload behind byte 28 while its FEC packet still is 16 bytes longer than it.
TEST(FecPacket, mediaOfPayloadType96LeavesSixteenZerosAtTheEnd) {
    Bytes odd = mediaPacket(9, 40);
    odd[1] = fecPayloadType;
    const Bytes fec = fecPacketOver({odd}, FecKind::row, 1);
    ASSERT_EQ(fec.size(), 56u);
    EXPECT_EQ(fec[fec_header::payloadTypeRecovery], 0x80 | 96);
    EXPECT_EQ(Bytes(fec.begin() + 28, fec.begin() + 40), Bytes(odd.begin() + 28, odd.end()));
    EXPECT_EQ(Bytes(fec.begin() + 40, fec.end()), Bytes(16, 0));
}

TEST(FecPacket, twoAtOnceAreTwoOneByOne) {
    const Bytes longer = sized(700);
    const std::vector<Bytes> shorts = {sized(100), sized(900)};
    RtpPacket row, column;
    startFecPacket(row, viewOf(shorts[0]), FecKind::row, 1, 2);
    startFecPacket(column, viewOf(shorts[1]), FecKind::column, 5, 2);
    addToFecPackets(row, column, viewOf(longer));
    EXPECT_EQ(bytesOf(row.view), fecPacketOver({shorts[0], longer}, FecKind::row, 1));
    EXPECT_EQ(bytesOf(column.view), fecPacketOver({shorts[1], longer}, FecKind::column, 5));
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
    const ProtectedRange range = protectedRange(viewOf(fecPacketNaming(65530, FecKind::column, 5, 4)));
    std::vector<std::uint32_t> members;
    for (std::uint32_t n = 0; n < 65536; ++n)
        if (range.contains(static_cast<std::uint16_t>(n))) members.push_back(n);
    EXPECT_EQ(members, (std::vector<std::uint32_t>{4, 9, 65530, 65535}));
}

}  // namespace
}  // namespace mvrtpfec::testing
