#include "core/fec_composer.h"

#include <array>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/errors.h"
#include "tests/shared/message_of.h"
#include "tests/shared/packets.h"

namespace mvrtpfec {
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
        for (; count > 0; --count) composer_.protect(viewOf(mediaPacket(++arrival_)));
        return *this;
    }

    std::vector<Finished> finished;
    std::vector<Bytes> packets;

private:
    void take(const RtpPacket& fec) {
        packets.push_back(bytesOf(fec.view));
        const char kind = fecKind(fec.view) == FecKind::row ? 'r' : 'c';
        finished.push_back({arrival_, kind, protectedRange(fec.view).base});
    }

    std::uint16_t arrival_ = 0;
    CFecComposer composer_;
};

/// A worked example; all else about what comes when is the model's to say.
TEST(FecComposer, columnsAreStaggeredAndRowsGoFirst) {
    EXPECT_EQ(Composing(fecBoth, 4, 4).feed(20).finished, (std::vector<Finished>{{4, 'r', 1},
                                                                                 {8, 'r', 5},
                                                                                 {12, 'r', 9},
                                                                                 {13, 'c', 1},
                                                                                 {16, 'r', 13},
                                                                                 {20, 'r', 17},
                                                                                 {20, 'c', 8}}));
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

TEST(FecComposer, refusedMatrixHasDrawnItsNumbersToo) {
    // On a new thread the numbers are drawn afresh.
    std::thread([] {
        EXPECT_THROW(Composing(fecRow, 4, 3), std::runtime_error);
        EXPECT_EQ(numberOf(Composing(fecRow, 4, 4).feed(4).packets.at(0)), 26500);
    }).join();
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
        {1, 4, 3, rows},        {1, 4, 21, rows},
        {2, 4, 3, rows},        {3, 3, 21, rows},
        {3, 3, 4, columnsBoth}, {3, 21, 4, columnsBoth},
        {1, 0, 4, columnsOne},  {1, 21, 4, columnsOne},
        {2, 0, 4, columnsOne},  {2, -1, 4, columnsOne},
        {2, 20, 6, product},    {3, 11, 10, product},
        {1, 20, 6, product},    {0, 101, 1, product},
        {0, 4, 26, product},    {0, INT32_MAX, INT32_MAX, product},
    };
    for (const Case& c : cases)
        EXPECT_EQ(messageOf([&] { Composing(c.mode, c.columns, c.rows); }), c.text)
            << c.mode << ' ' << c.columns << 'x' << c.rows;
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

TEST(FecComposer, emptySinkIsABadFunctionCall) {
    CFecComposer composer({}, fecRow, 1, 4);
    const Bytes media = mediaPacket(1);
    EXPECT_THROW(composer.protect(viewOf(media)), std::bad_function_call);
}

}  // namespace
}  // namespace mvrtpfec
