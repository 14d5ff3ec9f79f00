#include "core/fec_packet.h"

#include <gtest/gtest.h>

#include "tests/shared/packets.h"

namespace mvrtpfec {
namespace {

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
    const ProtectedRange range = protectedRange(viewOf(fecPacketNaming(65530, FecKind::column, 5, 4)));
    std::vector<std::uint32_t> members;
    for (std::uint32_t n = 0; n < 65536; ++n)
        if (range.contains(static_cast<std::uint16_t>(n))) members.push_back(n);
    EXPECT_EQ(members, (std::vector<std::uint32_t>{4, 9, 65530, 65535}));
}

}  // namespace
}  // namespace mvrtpfec
