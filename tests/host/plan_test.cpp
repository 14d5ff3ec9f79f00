#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "host/plan/matrix_plan.h"
#include "tests/host/arrivals.h"
#include "tests/host/program_run.h"

namespace mvrtpfec {
namespace {

ChannelConfig lossy(double loss, double burst) {
    ChannelConfig channel;
    channel.loss = channel.fecLoss = loss;
    channel.burst = burst;
    return channel;
}

TEST(PlanTest, ATrialLosesWhatTheMatrixCannotRebuild) {
    const TrialFigures none = tryMatrix({fecBoth, 5, 5}, lossy(0, 1), 70'000);
    EXPECT_EQ(none.delivered, 70'000U) << "over the wrap";
    EXPECT_EQ(none.residualLoss(), 0);
    const TrialFigures both = tryMatrix({fecBoth, 10, 10}, lossy(0.02, 1), 20'000);
    const TrialFigures rows = tryMatrix({fecRow, 10, 4}, lossy(0.02, 1), 20'000);
    EXPECT_NEAR(static_cast<double>(both.dropped), 400, 80);
    EXPECT_LT(both.residualLoss(), rows.residualLoss() / 10);
    // A packet stays lost when another of its ten is, or their FEC packet.
    EXPECT_NEAR(rows.residualLoss(), 0.02 * (1 - std::pow(0.98, 10)), 0.001);
    const TrialFigures again = tryMatrix({fecRow, 10, 4}, lossy(0.02, 1), 20'000);
    EXPECT_EQ(again.delivered, rows.delivered);
}

TEST(PlanTest, OffersWhatIsWithinTheLimitsBestFirst) {
    PlanRequest request;
    request.bitRate = 8'000'000;
    request.channel = lossy(0.02, 3);
    request.mostLatency = 200;
    request.mostOverhead = 0.3;
    request.packets = 5000;
    const auto entries = planMatrices(request);
    ASSERT_GT(entries.size(), 5U);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const PlanEntry& entry = entries[i];
        EXPECT_LE(entry.cost.overhead, 0.3);
        EXPECT_LE(2 * *entry.latency, 200);
        const int packets = entry.matrix.columns * (entry.matrix.mode == fecRow ? 1 : entry.matrix.rows);
        EXPECT_NEAR(*entry.latency, packets * 1316 * 8 / 8000.0, 1e-6);
        EXPECT_NO_THROW(
            CFecComposer::checkMatrix(entry.matrix.mode, entry.matrix.columns, entry.matrix.rows));
        EXPECT_GE(entry.trial.residualLoss(), entries[i > 0 ? i - 1 : 0].trial.residualLoss());
    }
}

/// Hands out media packets of these numbers, ten milliseconds apart.
class NumberedSource final : public PacketSource {
public:
    explicit NumberedSource(std::vector<std::uint16_t> numbers) : numbers_(std::move(numbers)) {}

    bool read(Datagram& datagram) override {
        if (next_ == numbers_.size()) return false;
        datagram.payload = mediaPacket(numbers_[next_], 1, 1012);
        datagram.time = std::chrono::milliseconds(10 * next_++);
        return true;
    }
    double progress() const override { return 0; }

private:
    std::vector<std::uint16_t> numbers_;
    std::size_t next_ = 0;
};

TEST(LossTraceTest, ReadsWhatWasLostFromTheNumbers) {
    NumberedSource source({65533, 65534, 1, 0, 1, 4, 5, 3, 30'000, 30'002, 7});
    const LossTrace trace = readLossTrace(source);
    // 65533 to 5 without 65535 and 2, then 30000 to 30002 without 30001, then 7.
    const std::vector<bool> expected{false, false, true,  false, false, true, false,
                                     false, false, false, true,  false, false};
    EXPECT_EQ(trace.lost, expected);
    EXPECT_DOUBLE_EQ(trace.meanBurst(), 1);
    EXPECT_EQ(trace.longestBurst(), 1U);
    EXPECT_NEAR(static_cast<double>(*trace.bitRate), 8000 * 100 / (1 - 3.0 / 13), 1);
}

TEST(LossTraceTest, ATrialLosesAsTheTraceDoes) {
    LossTrace burst;
    burst.lost.assign(1000, false);
    std::fill_n(burst.lost.begin() + 500, 8, true);
    EXPECT_EQ(burst.longestBurst(), 8U);
    const TrialFigures wide = tryMatrix({fecColumn, 10, 10}, burst, 20'000);
    const TrialFigures narrow = tryMatrix({fecColumn, 5, 10}, burst, 20'000);
    EXPECT_EQ(wide.dropped, 160U);
    EXPECT_EQ(wide.delivered, 20'000U);
    // Three columns of five lose two packets each time.
    EXPECT_NEAR(narrow.residualLoss(), 6.0 / 1000, 1e-3);
}

class PlanCommand : public ProgramTest {};

TEST_F(PlanCommand, TellsTheSameInJson) {
    const auto json = figures("plan --bitrate 8M --loss 0.01 --max-overhead 25");
    ASSERT_GT(json["matrices"].size(), 3U);
    for (const auto& matrix : json["matrices"]) EXPECT_LE(matrix["overhead_percent"], 25);
    EXPECT_EQ(run("plan --max-latency 100").status, 2);
    EXPECT_EQ(run("plan --trace none.pcap").status, 1);
    EXPECT_EQ(run("plan --trace none.pcap --loss 0.1").status, 2);
    store("in.ts", sample());
    ASSERT_EQ(run("protect in.ts fec.pcap --preset low-delay").status, 0);
    EXPECT_EQ(run("protect in.ts fec.pcap --preset low-delay --rows 5").status, 2);
    EXPECT_EQ(run("protect in.ts fec.pcap --preset none").status, 2);
    EXPECT_EQ(figures("plan --trace fec.pcap --max-latency 200")["loss"], 0);
    EXPECT_EQ(run("plan --bitrate 8M --max-latency 1").status, 1);
}

}  // namespace
}  // namespace mvrtpfec
