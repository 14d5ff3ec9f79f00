#include <gtest/gtest.h>

#include "rtp_media/chain/rtp_packet_builder.h"
#include "tests/rtp_media/chain/collected_units.h"

namespace mvrtpfec::test {
namespace {

std::unique_ptr<NAL> chunkOf(const Bytes& bytes) {
    auto chunk = std::make_unique<NAL>(StreamType::h264, static_cast<std::int32_t>(bytes.size()));
    chunk->append(bytes);
    return chunk;
}

Bytes wireOf(RTPMediaPacket& packet, std::uint32_t ssrc, RTPMediaPacket::Sizes& sizes) {
    Bytes wire(packet.serializedSize());
    sizes = packet.serialize(wire.data(), ssrc);
    return wire;
}

TEST(RTPMediaPacket, WritesHeaderPrefixAndChunksBehindTheOffset) {
    RTPMediaPacket packet(chunkOf({9, 9, 1, 2}), 2, {0x7C, 0x85}, 96);
    packet.addChunk(chunkOf({3, 4, 5}));
    packet.stamp(65536 + 0x1234, true, 48000, 90000, 45000, true);
    packet.writeTimestamp(0x10);
    RTPMediaPacket::Sizes sizes;
    const Bytes expected{0x80, 0xE0, 0x12, 0x34, 0, 0, 0xBB, 0x90, 0xA1, 0xB2,
                         0xC3, 0xD4, 0x7C, 0x85, 1, 2, 3,    4,    5};
    EXPECT_EQ(wireOf(packet, 0xA1B2C3D4, sizes), expected);
    EXPECT_EQ(sizes.total, 19U);
    EXPECT_EQ(sizes.prefix, 2U);
    EXPECT_EQ(sizes.payload, 5U);
    EXPECT_TRUE(packet.discontinuity() && packet.timestampWritten() && packet.marker());
    EXPECT_EQ(packet.ptsOrDts(), 45000U);
}

TEST(RTPMediaPacket, NegativeOffsetSkipsNothingAndTimesOfMillenniaStayExact) {
    RTPMediaPacket packet(chunkOf({7}), -1, {}, 33);
    packet.stamp(0, false, 96000, 0xFFFF'FFFF'FFFF'0000, 0, false);
    packet.writeTimestamp(0);
    RTPMediaPacket::Sizes sizes;
    const Bytes wire = wireOf(packet, 0, sizes);
    EXPECT_EQ(wire.size(), 13U);
    // 0xFFFFFFFFFFFF0000 x 96000 / 90000, of the whole number the lowest 32 bits.
    EXPECT_EQ((Bytes{wire.begin() + 4, wire.begin() + 8}), (Bytes{0x11, 0x10, 0, 0}));
}

TEST(RTPPacketBuilder, CountsPacketsAndPassesTheEndOn) {
    struct Listener : RTPPacketListener {
        void onPacket(std::unique_ptr<RTPMediaPacket>) override { ++packets; }
        void onEndOfStream() override { ++ends; }
        int packets = 0;
        int ends = 0;
    } listener;
    const auto builder = RTPPacketBuilder::create(StreamType::mpeg2ts, 33, 5000, &listener,
                                                  ParameterSetMode::sdp, TimestampMode::presentation);
    ASSERT_NE(builder, nullptr);
    builder->deliverPacket(std::make_unique<RTPMediaPacket>(chunkOf({1}), 0, Bytes{}, 33));
    builder->deliverPacket(nullptr);
    EXPECT_EQ(builder->sequenceCounter(), 1U);
    EXPECT_EQ(listener.packets, 1);
    EXPECT_EQ(listener.ends, 1);
    EXPECT_EQ(builder->port(), 5000U);
}

TEST(Factories, KnowTheTypesOfTheirTables) {
    std::vector<int> parsed;
    std::vector<int> packetized;
    for (int number = -1; number < 70; ++number) {
        const auto type = static_cast<StreamType>(number);
        if (createNALBuilder(type) != nullptr) parsed.push_back(number);
        if (RTPPacketBuilder::create(type, 96, 5000, nullptr, ParameterSetMode::sdp,
                                     TimestampMode::presentation) != nullptr)
            packetized.push_back(number);
    }
    EXPECT_EQ(parsed,
              (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 9, 10, 11, 12, 14, 17, 18, 19, 20, 21, 22, 23, 24}));
    EXPECT_EQ(packetized, (std::vector<int>{2, 4, 5, 7, 9, 10, 14}));
}

}  // namespace
}  // namespace mvrtpfec::test
