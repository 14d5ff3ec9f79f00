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

TEST(RtpPacket, lengthIsModulo65536WhileTheBufferHoldsAll) {
    Bytes bytes = packetOf(0x80, 33, 70000);
    bytes.back() = 0x77;
    const RtpPacket packet(bytes.data(), bytes.size());
    EXPECT_EQ(packet.view.length, 4464);
    ASSERT_EQ(packet.bufferSize(), 70000u);
    EXPECT_EQ(Bytes(packet.view.data, packet.view.data + packet.bufferSize()), bytes);
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

TEST(RtpPacket, payloadBeginsBehindTheFecHeaderForPayloadType96Alone) {
    EXPECT_EQ(viewOf(packetOf(0x80, 33 | 0x80, 100)).payloadOffset(), 12u);
    EXPECT_EQ(viewOf(packetOf(0x80, 97, 100)).payloadOffset(), 12u);
    EXPECT_EQ(viewOf(packetOf(0x80, 96 | 0x80, 100)).payloadOffset(), 28u);
    EXPECT_EQ(viewOf(packetOf(0x80, 33, 8)).payloadLength(), 65532);
}

}  // namespace
}  // namespace mvrtpfec
