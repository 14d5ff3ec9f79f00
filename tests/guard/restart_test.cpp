#include <ostream>

#include <gtest/gtest.h>

#include "tests/guard/stream_run.h"

namespace mvrtpfec::testing {
namespace {

using Mode = ReceiverChain::Mode;

/// A source that plays 3000 packets, and again from another number, a few times.
struct Restarts {
    int jump;  ///< from the number that would have come next
    bool newSsrc;
    double loss = 0;
};

void PrintTo(const Restarts& r, std::ostream* out) {
    *out << "jump " << r.jump << (r.newSsrc ? " new" : " same") << " SSRC, loss " << r.loss;
}

class RestartingSource : public ::testing::TestWithParam<Restarts> {
protected:
    static constexpr int runs = 8;
    static constexpr int length = 3000;
    static constexpr Matrix matrix{10, 10};
    /// Media packets after which media flows again: the matrix has to be heard, the decoder to fill.
    static constexpr int flowsAgainAfter = 128 + 2 * 10 * 10;
};

TEST_P(RestartingSource, FlowsAgainWithoutLossOrFalsePackets) {
    const auto [jump, newSsrc, loss] = GetParam();
    Source source{22222};
    source.length = 200;
    StreamRun run(Mode::guarded, matrix, source, {loss});
    for (int i = 0; i < runs; ++i) {
        if (i > 0) run.restart(source);
        run.send(length);
        source.firstNumber = static_cast<std::uint16_t>(run.nextNumber() + jump);
        if (newSsrc) ++source.ssrc;
        ++source.seed;
    }
    run.finish();
    printf(
        "jump %d: res %ld ideal %ld mism %ld dis %ld silence %ld restarts %lu rep %lu late %lu foreign %lu\n",
        jump, run.residual(), run.idealResidual(), run.delivery().mismatched, run.delivery().disordered,
        run.delivery().longestSilence, run.chain().figures().restarts, run.chain().figures().repeated,
        run.chain().figures().late, run.chain().figures().foreign);
    EXPECT_EQ(run.delivery().mismatched, 0);
    EXPECT_EQ(run.delivery().disordered, 0);
    EXPECT_LE(run.delivery().longestSilence, flowsAgainAfter);
}

constexpr Restarts restarts[] = {
    {-5, false},         {-500, false},        {-5000, false},   {-40000, false},
    {5, false},          {500, false},         {5000, false},    {40000, false},
    {0, true},           {-5, true},           {-500, true},     {12345, true},
    {7, true},           {100, true},          {-5, false, .03}, {-500, false, .03},
    {-5000, false, .03}, {-40000, false, .03}, {5, false, .03},  {500, false, .03},
    {5000, false, .03},  {40000, false, .03},  {0, true, .03},   {-5, true, .03},
    {-500, true, .03},   {12345, true, .03},   {7, true, .03},   {100, true, .03},
};
INSTANTIATE_TEST_SUITE_P(Guard, RestartingSource, ::testing::ValuesIn(restarts));

}  // namespace
}  // namespace mvrtpfec::testing
