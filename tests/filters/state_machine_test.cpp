#include "tests/filters/state_machine.h"

#include <array>
#include <memory>
#include <mutex>

#include <gtest/gtest.h>

#include "core/fec_composer.h"
#include "receiver/rtp_fec_in.h"
#include "sender/rtp_fec_filter.h"
#include "tests/shared/object_count.h"
#include "tests/shared/packets.h"

namespace mvrtpfec {

namespace {

constexpr int actions = 300;

/// Mostly media in order, at times with a hole, a runt or something foreign.
Bytes roughPacket(std::uint32_t n) {
    if (n % 97 == 0) return Bytes(n % 14, 0x80);
    if (n % 89 == 0) return Bytes(40, 0x55);
    return mediaPacket(static_cast<std::uint16_t>(n % 31 == 0 ? n + 1 : n), 200 + n % 7);
}

class StateMachineTest : public ::testing::TestWithParam<std::uint32_t> {
    const ObjectCount objects_;
};

TEST_P(StateMachineTest, SenderOutlivesAnything) {
    HRESULT result = S_OK;
    StateMachine machine(CRtpFecFilter::CreateInstance(nullptr, &result), GetParam());
    ASSERT_EQ(result, S_OK);
    const auto config = queryFor<IFECoverRTPConfig>(&machine.filter(), IID_IFECoverRTPConfig);
    setMatrix(&machine.filter(), 3, 4, 4);
    machine.addAction("mode",
                      [&] { config->SetMode(static_cast<std::int32_t>(machine.random()() % 5) - 1); });
    machine.addAction("columns",
                      [&] { config->SetColumns(static_cast<std::int32_t>(machine.random()() % 8)); });
    machine.addAction("rows", [&] { config->SetRows(static_cast<std::int32_t>(machine.random()() % 8)); });
    machine.run(actions, [](std::size_t, std::uint32_t n) { return roughPacket(n); });
    EXPECT_GT(machine.delivered(), 100u) << "of " << machine.sent();
}

/// Media on one input and the FEC packets that protect it on the two others.
class ProtectedStream {
public:
    Bytes packet(std::size_t input, std::uint32_t n) {
        if (input == 0) return roughPacket(n);
        const std::lock_guard lock(mutex_);
        std::vector<Bytes>& made = made_[input - 1];
        while (made.size() <= n % kept) protectNext();
        return made[n % kept];
    }

private:
    static constexpr std::size_t kept = 500;

    void protectNext() {
        const Bytes media = mediaPacket(next_++);
        columns_.protect(viewOf(media));
        rows_.protect(viewOf(media));
    }
    FecPacketSink sinkOf(std::size_t stream) {
        return [this, stream](const std::shared_ptr<RtpPacket>& packet) {
            made_[stream].push_back(bytesOf(packet->view));
        };
    }

    std::mutex mutex_;
    std::array<std::vector<Bytes>, 2> made_;
    CFecComposer columns_{sinkOf(0), fecColumn, 4, 4};
    CFecComposer rows_{sinkOf(1), fecRow, 4, 4};
    std::uint16_t next_ = 0;
};

struct CountingSink final : IErrorSink {
    void OnError(HRESULT) override { ++errors; }
    std::atomic<int> errors{0};
};

TEST_P(StateMachineTest, ReceiverOutlivesAnything) {
    HRESULT result = S_OK;
    CountingSink errors;
    mvn::log::DummyLogPerf logger;
    ProtectedStream packets;
    StateMachine machine(CRtpFecIn::CreateInstance(nullptr, &result), GetParam());
    ASSERT_EQ(result, S_OK);
    const auto config = queryFor<IRtpFecInConfig>(&machine.filter(), IID_IRtpFecInConfig);
    const auto totals = queryFor<IRtpFecInTotals>(&machine.filter(), IID_IRtpFecInTotals);
    machine.addAction("logger", [&] { config->SetLogPerf(machine.random()() % 2 ? &logger : nullptr); });
    machine.addAction("error sink",
                      [&] { config->SetErrorSink(machine.random()() % 2 ? &errors : nullptr); });
    machine.addReader([&] {
        std::uint64_t lost = 0, rebuilt = 0, abandoned = 0, received = 0;
        config->GetStatistics(&lost, &rebuilt, &abandoned, &received);
        std::this_thread::yield();
    });
    machine.addReader([&] {
        RtpFecInTotals sums;
        totals->GetTotals(&sums);
        EXPECT_LE(sums.rebuilt, sums.lost);
        std::this_thread::yield();
    });
    machine.run(actions, [&](std::size_t input, std::uint32_t n) { return packets.packet(input, n); });
    config->SetErrorSink(nullptr);
    config->SetLogPerf(nullptr);
    EXPECT_GT(machine.delivered(), 100u) << "of " << machine.sent();
}

INSTANTIATE_TEST_SUITE_P(Seeds, StateMachineTest, ::testing::Range(1u, 5u));

}  // namespace

}  // namespace mvrtpfec
