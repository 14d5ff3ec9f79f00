#include <gtest/gtest.h>

#include "tests/model/decoder_twins.h"
#include "tests/shared/packets.h"

namespace mvrtpfec {
namespace {

/// A decoder and its model beside it, for what random streams don't come to, and one worked example.
class FecDecoderTest : public ::testing::Test {
protected:
    void TearDown() override {
        twins.restart();
        EXPECT_EQ(twins.difference(), "");
    }

    void feed(const std::vector<Bytes>& packets) {
        for (const Bytes& packet : packets) EXPECT_EQ(twins.feed(packet), S_OK) << numberOf(packet);
    }
    void expectCounts(std::uint64_t lost, std::uint64_t rebuilt, std::uint64_t abandoned) const {
        EXPECT_EQ(twins.core().lostCount(), lost);
        EXPECT_EQ(twins.core().rebuiltCount(), rebuilt);
        EXPECT_EQ(twins.core().abandonedCount(), abandoned);
    }

    model::DecoderTwins twins;
};

/// A matrix of 4 x 4, so that the window is 32 numbers; it is full when the first is lost.
TEST_F(FecDecoderTest, rebuildsWhatItsGroupsReach) {
    std::vector<Bytes> media = mediaPackets(100, 100);
    for (Bytes& packet : media) writeBigEndian32(&packet[8], 7);  // a rebuilt one takes that of another
    const auto packets = [&](int first, int end) {
        return std::vector<Bytes>(media.begin() + first, media.begin() + end);
    };
    feed({fecPacketNaming(30000, FecKind::column, 4, 4), fecPacketNaming(30000, FecKind::row, 1, 4)});
    feed(packets(0, 41));
    feed(packets(43, 44));
    feed({fecPacketOver(packets(40, 44), FecKind::row, 1)});
    expectCounts(2, 0, 0);
    feed(packets(44, 55));
    feed({fecPacketOver({media[42], media[46], media[50], media[54]}, FecKind::column, 4)});
    expectCounts(2, 2, 0);  // the other by the row, which waited
    feed(packets(55, 56));
    feed(packets(57, 58));
    feed({fecPacketOver(packets(56, 60), FecKind::row, 1)});
    expectCounts(3, 2, 0);
    feed(packets(58, 60));
    expectCounts(3, 3, 0);
    feed(packets(61, 100));
    expectCounts(4, 3, 1);
    media.erase(media.begin() + 60);
    twins.restart();
    EXPECT_EQ(twins.released(), media);
}

TEST_F(FecDecoderTest, packetsItCannotReadAreFailures) {
    Bytes foreign = mediaPacket(1);
    foreign[1] = 34;
    Bytes shortFec = fecPacketNaming(30000, FecKind::row, 1, 5, 28);
    feed({shortFec});
    shortFec.resize(27);
    for (const Bytes& packet : {foreign, shortFec, mediaPacket(1, 65536 + 11), Bytes(11, 0x80), Bytes{}})
        EXPECT_EQ(twins.feed(packet), E_FAIL) << packet.size();
    feed({mediaPacket(1, 12)});
}

TEST_F(FecDecoderTest, packetOf70000BytesIsTakenModulo65536) {
    feed({mediaPacket(100, 70000)});
    twins.restart();
    ASSERT_EQ(twins.released().size(), 1u);
    EXPECT_EQ(twins.released()[0].size(), 4464u);
}

TEST_F(FecDecoderTest, keepsSoManyFecPacketsAndUsesThoseThatNeedNoPlace) {
    const Bytes early = fecPacketNaming(200, FecKind::row, 1, 4);
    feed({fecPacketNaming(30000, FecKind::column, 4, 4), early});
    feed({mediaPacket(100), mediaPacket(101), mediaPacket(103)});
    feed(std::vector<Bytes>(CFecDecoder::maxKeptFecPackets - 2, early));
    feed({fecPacketOver(mediaPackets(100, 4), FecKind::row, 1)});
    expectCounts(1, 1, 0);
    EXPECT_EQ(twins.feed(early), E_FAIL);
}

}  // namespace
}  // namespace mvrtpfec
