#include "tests/filters/state_machine.h"

#include <array>
#include <memory>
#include <mutex>

#include <gtest/gtest.h>

#include "core/fec_composer.h"
#include "receiver/rtp_fec_in.h"
#include "sender/rtp_fec_filter.h"

namespace mvrtpfec {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int actions = 300;

Bytes mediaPacket(std::uint32_t n) {
    Bytes packet(200 + n % 7);
    packet[0] = versionTwo;
    packet[1] = mediaPayloadType;
    writeBigEndian16(&packet[2], static_cast<std::uint16_t>(n));
    return packet;
}

/// Mostly media in order, at times with a hole, a runt or something foreign.
Bytes roughPacket(std::uint32_t n) {
    if (n % 97 == 0) return Bytes(n % 14, 0x80);
    if (n % 89 == 0) return Bytes(40, 0x55);
    return mediaPacket(n % 31 == 0 ? n + 1 : n);
}

class StateMachineTest : public testing::TestWithParam<std::uint32_t> {
protected:
    void SetUp() override { before_ = CBaseObject::ObjectsActive(); }
    void TearDown() override { EXPECT_EQ(CBaseObject::ObjectsActive(), before_) << "something was leaked"; }

private:
    LONG before_ = 0;
};

TEST_P(StateMachineTest, SenderOutlivesAnything) {
    HRESULT result = S_OK;
    StateMachine machine(CRtpFecFilter::CreateInstance(nullptr, &result), GetParam());
    ASSERT_EQ(result, S_OK);
    const auto config = queryFor<IFECoverRTPConfig>(&machine.filter(), IID_IFECoverRTPConfig);
    config->SetColumns(4);
    config->SetRows(4);
    config->SetMode(3);
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
        const ConstRtpPacketView view{media.data(), static_cast<std::uint16_t>(media.size())};
        columns_.protect(view);
        rows_.protect(view);
    }
    FecPacketSink sinkOf(std::size_t stream) {
        return [this, stream](const std::shared_ptr<RtpPacket>& packet) {
            made_[stream].emplace_back(packet->view.data, packet->view.data + packet->view.length);
        };
    }

    std::mutex mutex_;
    std::array<std::vector<Bytes>, 2> made_;
    CFecComposer columns_{sinkOf(0), fecColumn, 4, 4};
    CFecComposer rows_{sinkOf(1), fecRow, 4, 4};
    std::uint32_t next_ = 0;
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

INSTANTIATE_TEST_SUITE_P(Seeds, StateMachineTest, testing::Range(1u, 5u));

}  // namespace

}  // namespace mvrtpfec
