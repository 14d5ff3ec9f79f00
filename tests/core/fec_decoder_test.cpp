#include "core/fec_decoder.h"

#include <algorithm>
#include <numeric>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "tests/core/packets.h"
#include "tests/model/decoder_twins.h"

namespace mvrtpfec::testing {
namespace {

using Numbers = std::vector<std::uint16_t>;
using Cells = std::vector<std::string>;

Numbers numbersFrom(std::uint16_t first, std::size_t count) {
    Numbers numbers(count);
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

/// A decoder, its model beside it, and a sender whose packets all follow from their numbers.
class FecDecoderTest : public ::testing::Test {
protected:
    void TearDown() override {
        twins.restart();
        EXPECT_EQ(twins.difference(), "");
    }

    void take(const Bytes& packet) { EXPECT_EQ(twins.feed(packet), S_OK) << numberOf(packet); }
    HRESULT feed(std::uint16_t number) { return twins.feed(mediaPacket(number)); }
    void feedFrom(std::uint16_t first, std::size_t count) {
        for (const std::uint16_t number : numbersFrom(first, count)) take(mediaPacket(number));
    }

    /// Teaches the matrix by FEC packets of groups that lie nowhere near the media; 0 for a kind not sent.
    void learn(std::uint8_t rowCount, std::uint8_t columnOffset, std::uint8_t columnCount) {
        if (columnCount != 0) take(fecPacketNaming(30000, FecKind::column, columnOffset, columnCount));
        if (rowCount != 0) take(fecPacketNaming(30000, FecKind::row, 1, rowCount));
    }

    static Bytes fecOver(const Numbers& numbers, FecKind kind, std::uint8_t offset) {
        std::vector<Bytes> media;
        for (const std::uint16_t number : numbers) media.push_back(mediaPacket(number));
        return fecPacketOver(media, kind, offset);
    }
    static Bytes rowFec(std::uint16_t base, std::size_t count) {
        return fecOver(numbersFrom(base, count), FecKind::row, 1);
    }
    static Bytes columnFec(std::uint16_t base, std::uint8_t offset, std::size_t count) {
        Numbers numbers;
        for (std::size_t k = 0; k < count; ++k)
            numbers.push_back(static_cast<std::uint16_t>(base + k * offset));
        return fecOver(numbers, FecKind::column, offset);
    }

    /// Sends the media of a matrix but for the cells marked x, each row's FEC packet behind the row, the
    /// columns' behind the matrix.
    void feedMatrix(std::uint16_t base, const Cells& cells, bool rows, bool columns) {
        const auto width = static_cast<std::uint8_t>(cells[0].size());
        std::uint16_t number = base;
        for (const std::string& row : cells) {
            for (const char cell : row) {
                if (cell != 'x') take(mediaPacket(number));
                ++number;
            }
            if (rows) take(rowFec(static_cast<std::uint16_t>(number - width), width));
        }
        for (std::uint8_t c = 0; columns && c < width; ++c)
            take(columnFec(static_cast<std::uint16_t>(base + c), width, cells.size()));
    }

    Numbers released() const { return numbersOf(twins.released()); }
    const Bytes& releasedPacket(std::uint16_t number) const {
        const auto found =
            std::ranges::find_if(twins.released(), [&](const Bytes& p) { return numberOf(p) == number; });
        if (found == twins.released().end())
            throw std::out_of_range("not released: " + std::to_string(number));
        return *found;
    }
    void expectCounts(std::uint64_t lost, std::uint64_t rebuilt, std::uint64_t abandoned) const {
        EXPECT_EQ(twins.core().lostCount(), lost);
        EXPECT_EQ(twins.core().rebuiltCount(), rebuilt);
        EXPECT_EQ(twins.core().abandonedCount(), abandoned);
    }

    model::DecoderTwins twins;
};

/// The bytes that must have been sent; the SSRC is not protected.
Bytes withoutSsrc(Bytes packet) {
    std::fill_n(packet.begin() + 8, 4, std::uint8_t{0});
    return packet;
}

struct Pattern {
    std::string name;
    Cells cells;
    bool rows, columns;
    std::uint64_t rebuilt;
};

std::ostream& operator<<(std::ostream& out, const Pattern& pattern) {
    return out << pattern.name;
}

class FecDecoderPattern : public FecDecoderTest, public ::testing::WithParamInterface<Pattern> {};

TEST_P(FecDecoderPattern, rebuildsWhatRowsAndColumnsReach) {
    const Pattern& p = GetParam();
    const auto width = static_cast<std::uint8_t>(p.cells[0].size());
    const auto height = static_cast<std::uint8_t>(p.cells.size());
    const std::size_t window = 2u * width * (p.columns ? height : 1u);
    const auto base = static_cast<std::uint16_t>(1000 + window);
    const auto end = static_cast<std::uint16_t>(base + width * height);

    learn(p.rows ? width : 0, width, p.columns ? height : 0);
    feedFrom(1000, window);  // a matrix meets a window that is full
    feedMatrix(base, p.cells, p.rows, p.columns);
    feedFrom(end, window + 1);

    std::uint64_t lost = 0;
    for (const std::string& row : p.cells) lost += static_cast<std::uint64_t>(std::ranges::count(row, 'x'));
    expectCounts(lost, p.rebuilt, lost - p.rebuilt);
    const Numbers numbers = released();
    EXPECT_TRUE(std::ranges::is_sorted(numbers));
    EXPECT_EQ(numbers.size(), end - 1000u - (lost - p.rebuilt));
    for (const Bytes& packet : twins.released())
        EXPECT_EQ(withoutSsrc(packet), withoutSsrc(mediaPacket(numberOf(packet)))) << numberOf(packet);
}

INSTANTIATE_TEST_SUITE_P(
    Losses, FecDecoderPattern,
    ::testing::Values(Pattern{"None", {"....", "....", "....", "...."}, true, true, 0},
                      Pattern{"Single", {"....", ".x..", "....", "...."}, true, true, 1},
                      Pattern{"WholeRow", {"....", "xxxx", "....", "...."}, true, true, 4},
                      Pattern{"ColumnPairAloneInRows", {"....", ".x..", ".x..", "...."}, true, true, 2},
                      Pattern{"Square", {"....", ".xx.", ".xx.", "...."}, true, true, 0},
                      Pattern{"SquareAndOne", {"x...", ".xx.", ".xx.", "...."}, true, true, 1},
                      Pattern{"Corner", {"xx..", "x...", "....", "...."}, true, true, 3},
                      Pattern{"Staircase", {"xx..", ".xx.", "..xx", "...x"}, true, true, 7},
                      Pattern{"LastOne", {"....", "....", "....", "...x"}, true, true, 1},
                      Pattern{"RowsAloneSingles", {"x....", ".x...", "....x", "....."}, true, false, 3},
                      Pattern{"RowsAlonePair", {".....", "x..x.", ".....", "....."}, true, false, 0},
                      Pattern{"ColumnsAloneBurst", {"....", "..xx", "xx..", "...."}, false, true, 4},
                      Pattern{"ColumnsAlonePair", {"x...", "....", "x...", "...."}, false, true, 0}),
    [](const auto& instance) { return instance.param.name; });

TEST_F(FecDecoderTest, windowIsTwoPacketsBeforeTheFirstFecPacket) {
    feedFrom(100, 10);
    EXPECT_EQ(released(), numbersFrom(100, 7));
    EXPECT_EQ(feed(112), S_OK);
    EXPECT_EQ(feed(114), E_FAIL);
}

TEST_F(FecDecoderTest, windowOfRowsAloneIsTwiceTheColumns) {
    learn(5, 0, 0);
    feedFrom(100, 21);
    EXPECT_EQ(released(), numbersFrom(100, 10));
}

TEST_F(FecDecoderTest, windowOfColumnsAloneIsTwiceTheMatrix) {
    learn(0, 5, 4);
    feedFrom(100, 61);
    EXPECT_EQ(released(), numbersFrom(100, 20));
}

TEST_F(FecDecoderTest, rowCountOverridesTheColumnOffset) {
    learn(10, 5, 4);
    feedFrom(100, 81);
    EXPECT_EQ(released().size(), 0u);
    feedFrom(181, 1);
    EXPECT_EQ(released(), numbersFrom(100, 1));
}

TEST_F(FecDecoderTest, packetsItCannotReadAreFailures) {
    Bytes foreign = mediaPacket(1);
    foreign[1] = 34;
    Bytes shortFec = fecPacketNaming(30000, FecKind::row, 1, 5, 28);
    EXPECT_EQ(twins.feed(shortFec), S_OK);
    shortFec.resize(27);
    for (const Bytes& packet : {foreign, shortFec, mediaPacket(1, 65536 + 11), Bytes(11, 0x80), Bytes{}})
        EXPECT_EQ(twins.feed(packet), E_FAIL) << packet.size();
    EXPECT_EQ(twins.feed(mediaPacket(1, 12)), S_OK);
}

TEST_F(FecDecoderTest, fecPacketsThatContradictTheMatrixAreFailures) {
    learn(5, 5, 4);
    EXPECT_EQ(twins.feed(fecPacketNaming(30000, FecKind::column, 9, 4)), S_OK);
    EXPECT_EQ(twins.feed(fecPacketNaming(30000, FecKind::row, 9, 5)), S_OK);
    EXPECT_EQ(twins.feed(fecPacketNaming(30000, FecKind::row, 1, 4)), E_FAIL);
    learn(5, 5, 4);
    EXPECT_EQ(twins.feed(fecPacketNaming(30000, FecKind::column, 5, 5)), E_FAIL);
}

TEST_F(FecDecoderTest, packetBelowTheWindowIsAFailure) {
    learn(4, 4, 4);
    feedFrom(1000, 40);
    EXPECT_EQ(feed(1000), E_FAIL);
    EXPECT_EQ(released(), numbersFrom(1000, 40));  // all by the destroyed one
}

TEST_F(FecDecoderTest, lossIsRepairedAtOnceByAColumnPacketBehindIt) {
    learn(0, 4, 4);
    feedMatrix(100, {"....", "..x.", "....", "...."}, false, false);
    twins.feed(columnFec(102, 4, 4));
    expectCounts(1, 1, 0);
    feedFrom(116, 33);
    EXPECT_EQ(released(), numbersFrom(100, 16));
}

TEST_F(FecDecoderTest, fecPacketBeforeTheEndOfItsGroupWaits) {
    learn(4, 4, 4);
    feedFrom(100, 50);
    feedFrom(151, 1);
    twins.feed(rowFec(150, 4));
    expectCounts(1, 0, 0);
    feedFrom(152, 1);
    expectCounts(1, 0, 0);
    feedFrom(153, 1);
    expectCounts(1, 1, 0);
}

TEST_F(FecDecoderTest, groupThatBeganBeforeTheWindowIsGivenUp) {
    learn(4, 4, 4);
    feedFrom(100, 10);
    feedFrom(111, 32);  // window from 110
    twins.feed(rowFec(109, 4));
    expectCounts(1, 0, 0);
    twins.feed(rowFec(110, 4));
    expectCounts(1, 1, 0);
}

TEST_F(FecDecoderTest, rebuiltPacketTakesTheSsrcOfTheLastOneCombined) {
    learn(4, 4, 4);
    feedFrom(100, 1);
    feedFrom(102, 2);
    twins.feed(rowFec(100, 4));
    twins.restart();
    Bytes expected = mediaPacket(101);
    writeBigEndian32(expected.data() + 8, 0xcafe0000u + 103);
    EXPECT_EQ(releasedPacket(101), expected);
}

TEST_F(FecDecoderTest, rebuiltPacketHasItsOwnLength) {
    learn(4, 4, 4);
    const std::vector<Bytes> media = {mediaPacket(100, 50), mediaPacket(101, 1400), mediaPacket(102, 12),
                                      mediaPacket(103, 77)};
    for (const std::size_t kept : {0u, 1u, 3u}) twins.feed(media[kept]);
    twins.feed(fecPacketOver(media, FecKind::row, 1));
    twins.restart();
    EXPECT_EQ(releasedPacket(102).size(), 12u);
}

/// Five packets across the wrap: nothing is combined, and the parity of all five passes for a packet.
TEST_F(FecDecoderTest, oddGroupAcrossTheWrapGivesItsParityAlone) {
    learn(5, 5, 4);
    feedFrom(65480, 54);
    feedFrom(65535, 3);
    const Bytes fec = rowFec(65533, 5);
    twins.feed(fec);
    expectCounts(1, 1, 0);
    feedFrom(2, 40);
    Bytes expected(fec.begin() + 16, fec.end());
    std::fill_n(expected.begin(), 12, std::uint8_t{0});
    expected[0] = versionTwo;
    expected[1] = static_cast<std::uint8_t>((fec[1] & markerBit) | mediaPayloadType);
    writeBigEndian16(expected.data() + 2, 65534);
    std::copy_n(fec.begin() + 20, 4, expected.begin() + 4);
    EXPECT_EQ(releasedPacket(65534), expected);
}

TEST_F(FecDecoderTest, evenGroupAcrossTheWrapGivesNothing) {
    learn(4, 4, 4);
    feedFrom(65490, 44);
    feedFrom(65535, 3);
    twins.feed(rowFec(65534, 4));
    feedFrom(2, 40);
    expectCounts(1, 0, 1);
}

TEST_F(FecDecoderTest, repeatReplacesWhatIsStored) {
    learn(4, 4, 4);
    feedFrom(100, 5);
    Bytes other = mediaPacket(104);
    other.back() ^= 0xff;
    twins.feed(other);
    twins.restart();
    EXPECT_EQ(released(), numbersFrom(100, 5));
    EXPECT_EQ(releasedPacket(104), other);
}

/// 135 comes a second time and makes the next packet mark 136 to 140 missing, which are stored.
TEST_F(FecDecoderTest, latePacketMarksNumbersMissingAgain) {
    learn(4, 4, 4);
    feedFrom(100, 41);
    feedFrom(135, 1);
    expectCounts(0, 0, 0);
    feedFrom(141, 1);
    expectCounts(5, 0, 0);
    twins.feed(rowFec(136, 4));
    expectCounts(5, 1, 0);
    feedFrom(142, 40);
    expectCounts(5, 1, 4);
    EXPECT_EQ(released(), numbersFrom(100, 49));
}

TEST_F(FecDecoderTest, callbackThatThrowsLosesItsPacketAlone) {
    int calls = 0;
    CFecDecoder decoder([&](RtpPacket*) {
        ++calls;
        throw std::runtime_error("receiver");
    });
    for (const std::uint16_t number : numbersFrom(100, 10)) {
        const Bytes packet = mediaPacket(number);
        EXPECT_EQ(decoder.Feed(packet.data(), packet.size()), S_OK);
    }
    EXPECT_EQ(calls, 7);
}

TEST_F(FecDecoderTest, destructionReleasesUpTo65534) {
    learn(4, 4, 4);
    feedFrom(65520, 20);
    EXPECT_EQ(released(), Numbers{});
    twins.restart();
    EXPECT_EQ(released(), numbersFrom(65520, 15));
}

TEST_F(FecDecoderTest, destructionReleasesNothingBehindTheWrap) {
    learn(4, 4, 4);
    feedFrom(65520, 40);
    const std::size_t before = twins.released().size();
    EXPECT_EQ(before, 7u);
    twins.restart();
    EXPECT_EQ(released(), numbersFrom(65520, 15));
}

TEST_F(FecDecoderTest, packetOf70000BytesIsTakenModulo65536) {
    twins.feed(mediaPacket(100, 70000));
    twins.restart();
    EXPECT_EQ(releasedPacket(100).size(), 4464u);
}

TEST_F(FecDecoderTest, keepsNoMoreFecPacketsThanTheLimit) {
    feedFrom(100, 1);
    for (std::size_t n = 0; n < CFecDecoder::maxKeptFecPackets; ++n)
        ASSERT_EQ(twins.feed(fecPacketNaming(200, FecKind::row, 1, 4)), S_OK) << n;
    EXPECT_EQ(twins.feed(fecPacketNaming(200, FecKind::row, 1, 4)), E_FAIL);
}

TEST_F(FecDecoderTest, fullListStillUsesFecPacketsThatNeedNoPlace) {
    learn(4, 4, 4);
    feedFrom(100, 2);
    feedFrom(103, 1);
    for (std::size_t n = 2; n < CFecDecoder::maxKeptFecPackets; ++n)
        ASSERT_EQ(twins.feed(fecPacketNaming(200, FecKind::row, 1, 4)), S_OK) << n;
    EXPECT_EQ(twins.feed(rowFec(100, 4)), S_OK);
    expectCounts(1, 1, 0);
}

}  // namespace
}  // namespace mvrtpfec::testing
