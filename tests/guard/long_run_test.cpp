#include <ostream>

#include <gtest/gtest.h>

#include "tests/guard/stream_run.h"

namespace mvrtpfec::testing {
namespace {

using Mode = ReceiverChain::Mode;

constexpr int packets = 200000;
/// Groups that cross 65535 are of no use to the decoder. This is what a wrap then costs more than the
/// ideal, at most, in the streams below.
constexpr std::int64_t allowancePerWrap = 5;

struct LongRun {
    Matrix matrix;
    std::uint16_t firstNumber;
    Impairment network;
    std::size_t length = 100;
};

void PrintTo(const LongRun& r, std::ostream* out) {
    *out << int{r.matrix.columns} << 'x' << int{r.matrix.rows} << " from " << r.firstNumber << ", loss "
         << r.network.loss << " in bursts of " << r.network.burst << ", reordered by " << r.network.reorder;
}

class LongStream : public ::testing::TestWithParam<LongRun> {
protected:
    StreamRun& pass(StreamRun& run) {
        run.send(packets);
        run.finish();
        return run;
    }
    Source source() const { return {GetParam().firstNumber, GetParam().length}; }
};

TEST_P(LongStream, ComesThroughTheWraps) {
    const LongRun& r = GetParam();
    StreamRun run(Mode::guarded, r.matrix, source(), r.network);
    pass(run);
    run.expectFaithful();
    EXPECT_EQ(run.chain().figures().restarts, 0u);
    EXPECT_EQ(run.chain().figures().late, 0u);
    const std::int64_t wraps = (r.firstNumber + packets) / 65536;
    const std::int64_t ideal = run.idealResidual();
    EXPECT_LE(run.residual(), ideal + ideal / 10 + 2 + wraps * allowancePerWrap) << "ideal " << ideal;
}

constexpr LongRun longRuns[] = {
    {{5, 5}, 65535, {0.03, 1, 0, 0, 2}},      {{5, 5}, 65500, {0.03, 1, 0, 0, 65507}},
    {{5, 5}, 64500, {0.05, 1, 10, 0.01, 3}},  {{5, 5}, 0, {0.01, 10, 0, 0, 4}},
    {{10, 10}, 39, {0.05, 1, 0, 0, 5}},       {{10, 10}, 40, {0.01, 1, 10, 0.01, 6}},
    {{10, 10}, 65535, {0.01, 5, 3, 0, 7}, 0}, {{10, 10}, 12345, {0.03, 1, 0, 0.1, 8}},
    {{20, 5}, 65500, {0.05, 1, 0, 0, 65507}}, {{20, 5}, 1, {0.03, 1, 10, 0.01, 9}, 0},
    {{20, 5}, 65439, {0.05, 1, 5, 0, 10}},    {{4, 20}, 30000, {0.02, 1, 10, 0, 11}},
};

INSTANTIATE_TEST_SUITE_P(Guard, LongStream, ::testing::ValuesIn(longRuns));

/// Packets left missing over the ideal, a wrap on average, at 5 % random loss.
double wrapCost(int firstBeforeWrap) {
    constexpr int streams = 200;
    std::int64_t overIdeal = 0;
    for (int i = 0; i < streams; ++i) {
        const Source source{static_cast<std::uint16_t>(65536 - firstBeforeWrap - i % 60), 40};
        StreamRun run(Mode::guarded, {10, 10}, source, {0.05, 1, 10, 0, static_cast<std::uint64_t>(i)});
        run.send(1200);
        run.finish();
        EXPECT_EQ(run.delivery().mismatched, 0);
        overIdeal += run.residual() - run.idealResidual();
    }
    return static_cast<double>(overIdeal) / streams;
}

TEST(WrapCost, OfARunningStream) {
    EXPECT_LE(wrapCost(400), 2.0);
}
TEST(WrapCost, OfAStreamThatJustBegins) {
    EXPECT_LE(wrapCost(0), 1.5);
}

TEST(LongStreamClean, NeedsNoNewDecoder) {
    StreamRun run(Mode::guarded, {10, 10}, {60000, 100});
    run.send(140000);
    EXPECT_EQ(run.chain().decodersReplaced(), 0);
    run.finish();
    EXPECT_EQ(run.residual(), 0);
    EXPECT_LE(run.delivery().longestSilence, 2 * 100 + 20);
}

}  // namespace
}  // namespace mvrtpfec::testing
