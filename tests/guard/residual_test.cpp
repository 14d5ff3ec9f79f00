#include <ostream>

#include <gtest/gtest.h>

#include "tests/guard/stream_run.h"

namespace mvrtpfec::testing {
namespace {

using Mode = ReceiverChain::Mode;

/// Media packets left missing of 20,000, where media and FEC packets are lost alike.
struct Residual {
    Matrix matrix;
    int lossPercent;
    double burst;
    std::int64_t plain, guarded, ideal;
};

void PrintTo(const Residual& r, std::ostream* out) {
    *out << int{r.matrix.columns} << 'x' << int{r.matrix.rows} << ", " << r.lossPercent << " % in bursts of "
         << r.burst;
}

constexpr Residual table[] = {
    {{5, 5}, 1, 1, 56, 0, 0},    {{5, 5}, 3, 1, 456, 0, 0},     {{5, 5}, 5, 1, 991, 6, 6},
    {{5, 5}, 1, 3, 127, 23, 23}, {{5, 5}, 1, 5, 124, 51, 51},   {{5, 5}, 1, 10, 107, 73, 73},
    {{10, 10}, 1, 1, 64, 0, 0},  {{10, 10}, 3, 1, 490, 1, 1},   {{10, 10}, 5, 1, 1099, 11, 10},
    {{10, 10}, 1, 3, 82, 7, 7},  {{10, 10}, 1, 5, 101, 11, 11}, {{10, 10}, 1, 10, 79, 46, 46},
    {{20, 5}, 1, 1, 6, 0, 0},    {{20, 5}, 3, 1, 163, 0, 0},    {{20, 5}, 5, 1, 573, 10, 10},
    {{20, 5}, 1, 3, 24, 12, 12}, {{20, 5}, 1, 5, 24, 12, 12},   {{20, 5}, 1, 10, 25, 17, 17},
};

class ResidualTable : public ::testing::TestWithParam<Residual> {
protected:
    static void pass(StreamRun& run) {
        run.send(20000);
        run.finish();
        run.expectFaithful();
    }

    const Residual& expected_ = GetParam();
    const Impairment network_{expected_.lossPercent / 100.0, expected_.burst};
};

TEST_P(ResidualTable, PlainAsStored) {
    StreamRun plain(Mode::plain, expected_.matrix, {}, network_);
    pass(plain);
    EXPECT_EQ(plain.residual(), expected_.plain);
}

TEST_P(ResidualTable, GuardedAsStoredAndCloseToIdeal) {
    StreamRun guarded(Mode::guarded, expected_.matrix, {}, network_);
    pass(guarded);
    EXPECT_EQ(guarded.residual(), expected_.guarded);
    EXPECT_EQ(guarded.idealResidual(), expected_.ideal);
    EXPECT_LE(10 * guarded.residual(), 11 * guarded.idealResidual() + 20);
}

INSTANTIATE_TEST_SUITE_P(Guard, ResidualTable, ::testing::ValuesIn(table));

}  // namespace
}  // namespace mvrtpfec::testing
