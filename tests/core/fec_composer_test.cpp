#include "core/fec_composer.h"

#include <array>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/errors.h"
#include "tests/core/packets.h"

namespace mvrtpfec::testing {
namespace {

/// One finished FEC packet: which arrival (from 1) finished it, and what it names.
struct Finished {
    std::uint16_t arrival;
    char kind;
    std::uint16_t base;
    bool operator==(const Finished&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Finished& f) {
    return out << f.kind << f.base << " at " << f.arrival;
}

/// A composer fed with media packets numbered by their arrival, from 1.
class Composing {
public:
    Composing(std::int32_t mode, std::int32_t columns, std::int32_t rows)
        : composer_([this](std::shared_ptr<RtpPacket> fec) { take(*fec); }, mode, columns, rows) {}

    Composing& feed(std::uint16_t count) {
        for (; count > 0; --count) feedPacket(mediaPacket(static_cast<std::uint16_t>(arrival_ + 1)));
        return *this;
    }
    void feedPacket(const Bytes& media) {
        ++arrival_;
        composer_.protect(viewOf(media));
    }
    void throwNext() { throwNext_ = true; }

    std::vector<Finished> finished;
    std::vector<Bytes> packets;

private:
    void take(const RtpPacket& fec) {
        if (std::exchange(throwNext_, false)) throw std::logic_error("sink");
        const ProtectedRange range = protectedRange(fec.view);
        packets.push_back(bytesOf(fec.view));
        finished.push_back({arrival_, fecKind(fec.view) == FecKind::row ? 'r' : 'c', range.base});
    }

    std::uint16_t arrival_ = 0;
    bool throwNext_ = false;
    CFecComposer composer_;
};

using Schedule = std::vector<Finished>;

/// Runs with the state of `rand` fresh, as it is on a new thread.
template <class Function>
void onFreshThread(Function function) {
    std::thread(function).join();
}

TEST(FecComposer, rowsCompleteWithEveryLastColumn) {
    EXPECT_EQ(Composing(fecRow, 4, 4).feed(13).finished, (Schedule{{4, 'r', 1}, {8, 'r', 5}, {12, 'r', 9}}));
}

TEST(FecComposer, columnsAreStaggered) {
    // Column 0 from row 0, column 1 from row 3, column 2 from row 2, column 3 from row 1, column 4 again 0.
    EXPECT_EQ(
        Composing(fecColumn, 5, 4).feed(36).finished,
        (Schedule{{16, 'c', 1}, {20, 'c', 5}, {24, 'c', 9}, {28, 'c', 13}, {32, 'c', 17}, {36, 'c', 21}}));
}

TEST(FecComposer, rowReachesTheSinkBeforeTheColumn) {
    EXPECT_EQ(Composing(fecBoth, 4, 4).feed(20).finished, (Schedule{{4, 'r', 1},
                                                                    {8, 'r', 5},
                                                                    {12, 'r', 9},
                                                                    {13, 'c', 1},
                                                                    {16, 'r', 13},
                                                                    {20, 'r', 17},
                                                                    {20, 'c', 8}}));
}

TEST(FecComposer, singleColumnCompletesWithEveryRow) {
    Composing composing(fecColumn, 1, 4);
    EXPECT_EQ(composing.feed(9).finished, (Schedule{{4, 'c', 1}, {8, 'c', 5}}));
    const ProtectedRange range = protectedRange(viewOf(composing.packets[0]));
    EXPECT_EQ(range.offset, 1);
    EXPECT_EQ(range.count, 4);
}

/// Rows, then columns, then the step on: what protect does in one call.
TEST(FecComposer, singleStepsMakeTheSamePackets) {
    std::vector<Bytes> payloads;
    CFecComposer composer(
        [&](std::shared_ptr<RtpPacket> fec) {
            payloads.emplace_back(fec->view.data + 4, fec->view.data + fec->view.length);
        },
        fecBoth, 6, 5);
    for (std::uint16_t n = 1; n <= 100; ++n) {
        const Bytes media = mediaPacket(n), odd = mediaPacket(n, 1401);
        for (const Bytes& packet : {odd, media}) {
            composer.protectRow(viewOf(packet));
            composer.protectColumn(viewOf(packet));
        }
        composer.advanceColumn();
    }
    Composing whole(fecBoth, 6, 5);
    whole.feed(100);
    ASSERT_EQ(payloads.size(), whole.packets.size());
    for (std::size_t n = 0; n < payloads.size(); ++n)
        EXPECT_EQ(payloads[n], Bytes(whole.packets[n].begin() + 4, whole.packets[n].end())) << n;
}

TEST(FecComposer, headersNameTheMatrix) {
    Composing composing(fecBoth, 6, 5);
    composing.feed(6 * 5);
    for (const Bytes& fec : composing.packets) {
        const ProtectedRange range = protectedRange(viewOf(fec));
        const bool row = fecKind(viewOf(fec)) == FecKind::row;
        EXPECT_EQ(range.offset, row ? 1 : 6);
        EXPECT_EQ(range.count, row ? 6 : 5);
    }
}

TEST(FecComposer, modeNoneMakesNothing) {
    EXPECT_TRUE(Composing(fecNone, 4, 4).feed(40).finished.empty());
}

TEST(FecComposer, drawsTheColumnNumberBeforeTheRowNumber) {
    onFreshThread([] {
        for (const auto& [column, row] : {std::pair{41, 18467}, std::pair{6334, 26500}}) {
            Composing composing(fecBoth, 4, 4);
            composing.feed(20);
            EXPECT_EQ(numbersOf(composing.packets),
                      (std::vector<std::uint16_t>{
                          static_cast<std::uint16_t>(row), static_cast<std::uint16_t>(row + 1),
                          static_cast<std::uint16_t>(row + 2), static_cast<std::uint16_t>(column),
                          static_cast<std::uint16_t>(row + 3), static_cast<std::uint16_t>(row + 4),
                          static_cast<std::uint16_t>(column + 1)}));
        }
    });
}

TEST(FecComposer, refusedMatrixHasDrawnItsNumbersToo) {
    onFreshThread([] {
        EXPECT_THROW(Composing(fecRow, 4, 3), std::runtime_error);
        EXPECT_EQ(numberOf(Composing(fecRow, 4, 4).feed(4).packets.at(0)), 26500);
    });
}

TEST(FecComposer, refusesMatricesWithTheseTexts) {
    struct Case {
        std::int32_t mode, columns, rows;
        std::string text;
    };
    const std::string rows = "number of rows must be between 4 and 20";
    const std::string columnsBoth = "number of columns must be between 4 and 20 in this mode";
    const std::string columnsOne = "number of columns must be between 1 and 20 in this mode";
    const std::string product = "invalid number of columns and rows";
    const Case cases[] = {
        {1, 4, 3, rows},        {1, 4, 21, rows},        {2, 4, 3, rows},       {3, 3, 21, rows},
        {3, 3, 4, columnsBoth}, {3, 21, 4, columnsBoth}, {1, 0, 4, columnsOne}, {1, 21, 4, columnsOne},
        {2, 0, 4, columnsOne},  {2, -1, 4, columnsOne},  {2, 20, 6, product},   {3, 11, 10, product},
        {1, 20, 6, product},    {0, 101, 1, product},    {0, 4, 26, product},
    };
    for (const Case& c : cases) {
        try {
            Composing(c.mode, c.columns, c.rows);
            ADD_FAILURE() << c.mode << ' ' << c.columns << 'x' << c.rows << " was accepted";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(error.what(), c.text) << c.mode << ' ' << c.columns << 'x' << c.rows;
        }
    }
}

TEST(FecComposer, refusesModesFirstAndWithTheirOwnType) {
    for (const std::int32_t mode : {-1, 4, 2147483647}) {
        try {
            Composing(mode, 0, 0);
            ADD_FAILURE() << mode << " was accepted";
        } catch (const mvn::ExceptionTemplate<CFecComposer, mvn::MorvaneException>& error) {
            EXPECT_STREQ(error.what(), "invalid FEC mode");
        }
    }
}

TEST(FecComposer, acceptsTheLimits) {
    for (const auto& [mode, columns, rows] :
         {std::array{1, 1, 4}, std::array{1, 5, 20}, std::array{2, 1, 20}, std::array{2, 20, 5},
          std::array{3, 10, 10}, std::array{3, 4, 20}, std::array{3, 20, 4}, std::array{0, 4, 4},
          std::array{0, 50, 2}})
        EXPECT_NO_THROW(Composing(mode, columns, rows)) << mode << ' ' << columns << 'x' << rows;
}

TEST(FecComposer, hugeSizesAreRefusedWithoutOverflow) {
    for (const std::int32_t mode : {0, 1, 2, 3})
        EXPECT_THROW(Composing(mode, 2147483647, 2147483647), std::runtime_error) << mode;
}

TEST(FecComposer, emptySinkIsABadFunctionCall) {
    CFecComposer composer({}, fecRow, 1, 4);
    const Bytes media = mediaPacket(1);
    EXPECT_THROW(composer.protect(viewOf(media)), std::bad_function_call);
}

TEST(FecComposer, packetOutlivesTheComposer) {
    std::shared_ptr<RtpPacket> kept;
    {
        CFecComposer composer([&](std::shared_ptr<RtpPacket> fec) { kept = std::move(fec); }, fecRow, 1, 4);
        composer.protect(viewOf(mediaPacket(5)));
    }
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept.use_count(), 1);
    EXPECT_EQ(protectedRange(kept->view).base, 5);
}

TEST(FecComposer, unfinishedPacketsDieWithIt) {
    int handed = 0;
    {
        CFecComposer composer([&](std::shared_ptr<RtpPacket>) { ++handed; }, fecBoth, 4, 4);
        for (std::uint16_t n = 0; n < 15; ++n) composer.protect(viewOf(mediaPacket(n)));
        handed = 0;
    }
    EXPECT_EQ(handed, 0);
}

TEST(FecComposer, throwingSinkCostsItsPacketAndLeavesTheColumn) {
    Composing composing(fecRow, 4, 4);
    composing.feed(3).throwNext();
    EXPECT_THROW(composing.feed(1), std::logic_error);
    // Arrival 5 falls on the last column again, where no packet is left to finish.
    EXPECT_EQ(composing.feed(5).finished, (Schedule{{9, 'r', 6}}));
}

TEST(FecComposer, packetsThatFitNoFecPacketTakeNoPlace) {
    Bytes shortFec = mediaPacket(70, 27);
    shortFec[1] = fecPayloadType;
    Composing composing(fecRow, 4, 4);
    composing.feed(2);
    for (const Bytes& odd : {mediaPacket(70, 1401), shortFec, Bytes{}, Bytes(11, 0xff)})
        composing.feedPacket(odd);
    EXPECT_EQ(composing.feed(6).finished, (Schedule{{8, 'r', 1}, {12, 'r', 9}}));
}

}  // namespace
}  // namespace mvrtpfec::testing
