#include <map>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "core/fec_composer.h"
#include "core/fec_packet.h"
#include "host/interop/fec_format.h"
#include "host/interop/fec_intake.h"
#include "host/io/datagram.h"
#include "support/log/dummy_log_perf.h"
#include "tests/host/io_test_frames.h"
#include "tests/host/program_run.h"

namespace mvrtpfec {
namespace {

/// Media and the FEC packets that each completes, through a bridge that has seen the media.
struct InteropTest : testing::Test {
    void send(std::uint16_t number, std::size_t length) {
        Bytes media = rtpPacket(number, length);
        lengths[number] = length;
        bridge.note(viewOf(media));
        intake.take({media.data(), static_cast<std::uint16_t>(length)});
        composer.protect(viewOf(media));
    }
    /// Parity of the lengths of a group, less `header` each.
    std::uint16_t parity(ConstRtpPacketView fec, std::size_t header) {
        const ProtectedRange range = protectedRange(fec);
        std::size_t all = 0;
        for (unsigned i = 0; i < range.count; ++i)
            all ^= lengths.at(static_cast<std::uint16_t>(range.base + i * range.offset)) - header;
        return static_cast<std::uint16_t>(all);
    }
    static std::uint16_t field(ConstRtpPacketView fec) {
        return readBigEndian16(fec.data + fec_header::lengthRecovery);
    }

    std::map<std::uint16_t, std::size_t> lengths;
    FecFormatBridge bridge;
    mvn::log::DummyLogPerf log;
    FecIntake intake{std::nullopt, log};
    std::vector<std::shared_ptr<RtpPacket>> made;
    CFecComposer composer{[this](const auto& packet) { made.push_back(packet); }, fecBoth, 5, 4};
};

TEST_F(InteropTest, PacketsOfOneLengthAreTurnedThereAndBackOverTheWrap) {
    for (int i = 0; i < 200; ++i) send(static_cast<std::uint16_t>(65436 + i), 1328);
    ASSERT_GT(made.size(), 70U);
    for (const auto& packet : made) {
        const std::uint16_t ours = field(packet->view);
        EXPECT_EQ(ours, parity(packet->view, 0));
        EXPECT_TRUE(bridge.toStandard(packet->view));
        EXPECT_EQ(field(packet->view), parity(packet->view, rtpHeaderSize));
        EXPECT_TRUE(intake.take(packet->view));
        EXPECT_EQ(field(packet->view), ours);
    }
}

TEST_F(InteropTest, WhereLengthsDifferNothingIsTurned) {
    for (std::uint16_t i = 0; i < 40; ++i) send(i, 1328);
    for (std::uint16_t i = 40; i < 80; ++i) send(i, 1140);
    std::size_t refused = 0;
    for (const auto& packet : made) {
        const ProtectedRange range = protectedRange(packet->view);
        const bool isUniform = range.base >= 40;
        const std::uint16_t ours = field(packet->view);
        EXPECT_EQ(bridge.toStandard(packet->view), isUniform);
        EXPECT_EQ(field(packet->view), isUniform ? parity(packet->view, rtpHeaderSize) : ours);
        if (!isUniform) ++refused;
    }
    EXPECT_GT(refused, 10U);
    EXPECT_LT(refused, made.size());
}

TEST_F(InteropTest, OurOwnAreTakenAsTheyAre) {
    for (std::uint16_t i = 0; i < 100; ++i) send(i, 1328);
    for (const auto& packet : made) {
        const std::uint16_t ours = field(packet->view);
        EXPECT_TRUE(intake.take(packet->view));
        EXPECT_EQ(field(packet->view), ours);
    }
    EXPECT_EQ(intake.leftOut(), 0U);
}

TEST_F(InteropTest, TimestampsOfSendingBecomeThoseOfTheFirstPacket) {
    FecTimestamps timestamps;
    const auto media = [&](std::uint16_t number, std::uint32_t timestamp) {
        Bytes packet = rtpPacket(number, 200);
        writeBigEndian32(&packet[4], timestamp);
        timestamps.note(viewOf(packet));
        composer.protect(viewOf(packet));
    };
    std::size_t done = 0;
    std::size_t settled = 0;
    const auto settleNew = [&](std::uint32_t shift) {
        for (; done < made.size(); ++done) {
            const RtpPacketView fec = made[done]->view;
            const std::uint32_t ours = fec.timestamp();
            writeBigEndian32(fec.data + 4, ours + shift);
            timestamps.settle(fec);
            if (fec.timestamp() == ours) ++settled;
        }
    };
    for (std::uint16_t i = 0; i < 100; ++i) {
        media(static_cast<std::uint16_t>(65500 + i), i * 300U - 9000);
        settleNew(1200);
    }
    EXPECT_EQ(settled, made.size() - 7) << "the first ones could be of another run";
    settled = done = 0;
    made.clear();
    for (std::uint16_t i = 100; i < 200; ++i) {
        media(static_cast<std::uint16_t>(65500 + i), i * 300U);
        settleNew(i % 20 == 19 ? 900 : 0);
    }
    EXPECT_LT(settled, made.size()) << "one that is late by itself stays so";
    settled = done = 0;
    made.clear();
    for (std::uint16_t i = 200; i < 300; ++i) {
        media(static_cast<std::uint16_t>(65500 + i), i * 300U);
        settleNew(static_cast<std::uint32_t>(-300));
    }
    EXPECT_EQ(settled, 0U) << "nor is one from before";
}

TEST_F(InteropTest, AnotherSendersFormatIsNoticed) {
    for (std::uint16_t i = 0; i < 200; ++i) send(i, 1328);
    std::size_t taken = 0;
    const auto takeOdd = [&](std::size_t from, std::size_t to, bool standard) {
        taken = 0;
        std::size_t odd = 0;
        for (std::size_t i = from; i < to; ++i) {
            if (protectedRange(made[i]->view).count % 2 == 0) continue;
            ++odd;
            const std::uint16_t ours = field(made[i]->view);
            if (standard) bridge.toStandard(made[i]->view);
            if (intake.take(made[i]->view) && field(made[i]->view) == ours) ++taken;
        }
        return odd;
    };
    const std::size_t third = made.size() / 3;
    std::size_t odd = takeOdd(0, third, false);
    EXPECT_EQ(taken, odd);
    // Two are left out until the third tells.
    odd = takeOdd(third, 2 * third, true);
    EXPECT_EQ(taken, odd - 2);
    odd = takeOdd(2 * third, made.size(), false);
    EXPECT_EQ(taken, odd - 2);
}

class InteropFilesTest : public ProgramTest {};

TEST_F(InteropFilesTest, StandardFecIsMadeAndRepairedFromFiles) {
    store("in.ts", sample());
    ASSERT_EQ(run("protect in.ts fec.pcap --mode both --columns 5 --rows 5 --fec-format standard").status, 0);
    ASSERT_EQ(run("repair fec.pcap out.ts").status, 0);
    EXPECT_EQ(load("out.ts"), sample());
    EXPECT_EQ(run("repair fec.pcap out.ts --fec-format other").status, 2);
}

}  // namespace
}  // namespace mvrtpfec
