#include <algorithm>
#include <ostream>

#include <gtest/gtest.h>

#include "tests/guard/stream_run.h"

namespace mvrtpfec::testing {
namespace {

using Mode = ReceiverChain::Mode;

/// How the numbers go on from the ones that would have come next, a few times.
struct Restarts {
    int jump;
    bool newSsrc;
    double loss = 0;
};

void PrintTo(const Restarts& r, std::ostream* out) {
    *out << "jump " << r.jump << ", " << (r.newSsrc ? "new" : "same") << " SSRC, loss " << r.loss;
}

constexpr Matrix matrix{10, 10};
constexpr int window = 2 * 10 * 10;
/// Media packets after which media flows again: two matrices, and what the guard waits for behind a loss.
constexpr int flowsAgainAfter = window + 20 + 2;

Source shortPackets(std::uint16_t firstNumber) {
    return {firstNumber, 200};
}

class RestartingSource : public ::testing::TestWithParam<Restarts> {};

TEST_P(RestartingSource, FlowsOnWithoutFalsePackets) {
    constexpr int restarts = 7;
    const auto [jump, newSsrc, loss] = GetParam();
    Source source = shortPackets(22222);
    StreamRun run(Mode::guarded, matrix, source, {loss});
    run.send(3000);
    for (int i = 0; i < restarts; ++i) {
        source.firstNumber = static_cast<std::uint16_t>(run.nextNumber() + jump);
        source.ssrc += newSsrc;
        ++source.seed;
        run.restart(source);
        run.send(3000);
    }
    run.finish();
    EXPECT_EQ(run.delivery().mismatched, 0);
    EXPECT_LE(run.delivery().longestSilence, flowsAgainAfter);
    // A packet of the new run may fill a hole that the old one left open.
    EXPECT_LE(run.delivery().disordered, loss > 0 ? restarts : 0);
    EXPECT_LE(run.residual(), run.idealResidual() + (loss > 0 ? 2 * restarts : 0));
    const bool seamless = !newSsrc && jump > 0 && jump < 1024;
    EXPECT_EQ(run.chain().figures().restarts, seamless ? 0u : 7u);
}

std::vector<Restarts> allRestarts() {
    std::vector<Restarts> all;
    for (const double loss : {0.0, 0.03}) {
        for (const int jump : {-40000, -5000, -500, -5, 5, 500, 5000, 40000})
            all.push_back({jump, false, loss});
        for (const int jump : {0, -5, 7, 100, 12345}) all.push_back({jump, true, loss});
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(Guard, RestartingSource, ::testing::ValuesIn(allRestarts()));

class LoopedFile : public ::testing::TestWithParam<int> {};

// The very same packets again. Where they lie close behind, they pass for repeats at first.
TEST_P(LoopedFile, FlowsOn) {
    constexpr int takenForRepeats = 1024;
    StreamRun run(Mode::guarded, matrix, shortPackets(50000));
    for (int i = 0; i < 20; ++i) {
        run.restart(shortPackets(50000));
        run.send(GetParam());
    }
    run.finish();
    EXPECT_EQ(run.delivery().mismatched, 0);
    EXPECT_LE(run.delivery().longestSilence, takenForRepeats + flowsAgainAfter);
    EXPECT_GE(run.chain().figures().restarts, 1u);
}

INSTANTIATE_TEST_SUITE_P(Guard, LoopedFile, ::testing::Values(300, 700, 3000));

class ChangedMatrix : public ::testing::TestWithParam<bool> {};

TEST_P(ChangedMatrix, IsFollowed) {
    const bool newSource = GetParam();
    const std::vector<Matrix> matrices{{5, 5}, {20, 5}, {4, 20}, {10, 10}, {5, 5}};
    Source source = shortPackets(500);
    StreamRun run(Mode::guarded, matrix, source, {0.03});
    run.send(3000);
    for (const Matrix& next : matrices) {
        source.firstNumber = static_cast<std::uint16_t>(run.nextNumber() + (newSource ? 4000 : 0));
        source.ssrc += newSource;
        ++source.seed;
        run.restart(source, next);
        run.send(3000);
    }
    run.finish();
    run.expectFaithful();
    EXPECT_LE(run.delivery().longestSilence, flowsAgainAfter);
    const auto changes = static_cast<std::int64_t>(matrices.size());
    EXPECT_LE(run.residual(), run.idealResidual() + 2 * changes);
}

INSTANTIATE_TEST_SUITE_P(Guard, ChangedMatrix, ::testing::Bool());

class WithoutColumns : public ::testing::TestWithParam<Matrix> {};

// From a matrix to rows alone, and from rows alone to the same and to others.
TEST_P(WithoutColumns, FlowOnWithinTwoMatrices) {
    const Matrix before = GetParam();
    Source source = shortPackets(500);
    StreamRun run(Mode::guarded, before, source);
    run.send(1000);
    int longest = std::max(2 * before.columns * std::max<int>(before.rows, 1), 128);
    for (const Matrix& next : {Matrix{5, 0}, Matrix{5, 0}, Matrix{10, 0}, Matrix{5, 0}, Matrix{4, 0}}) {
        run.resetSilence();
        ++source.ssrc;
        ++source.seed;
        source.firstNumber = static_cast<std::uint16_t>(source.firstNumber + 9000);
        run.restart(source, next);
        run.send(1000);
        EXPECT_LE(run.delivery().longestSilence, longest + next.columns);
        longest = 2 * next.columns;
    }
    run.finish();
    EXPECT_EQ(run.delivery().mismatched, 0);
    EXPECT_EQ(run.residual(), 0);
}

INSTANTIATE_TEST_SUITE_P(Guard, WithoutColumns, ::testing::Values(Matrix{5, 5}, Matrix{20, 5}, Matrix{7, 0}));

// A decoder that is replaced right behind a wrap can't release what it holds behind 65534.
TEST(RestartAtTheWrap, LosesAtMostTheWindow) {
    for (const int last : {65534, 65535, 0, 1, 150}) {
        StreamRun run(Mode::guarded, matrix, shortPackets(static_cast<std::uint16_t>(last - 999)));
        run.send(1000);
        Source next = shortPackets(30000);
        ++next.ssrc;
        run.restart(next);
        run.send(1000);
        run.finish();
        run.expectFaithful();
        EXPECT_LE(run.delivery().residual(0, 1000), window) << last;
        EXPECT_EQ(run.delivery().residual(1000, 2000), 0) << last;
    }
}

}  // namespace
}  // namespace mvrtpfec::testing
