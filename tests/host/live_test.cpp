#include <algorithm>
#include <chrono>
#include <initializer_list>
#include <string>
#include <thread>

#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "host/live/delay_line.h"
#include "host/live/file_media_input.h"
#include "host/live/reception_meter.h"
#include "host/stages/repair_chain.h"
#include "tests/host/io_test_frames.h"
#include "tests/host/program_run.h"
#include "tests/host/udp_listeners.h"

namespace mvrtpfec {
namespace {

using namespace std::chrono_literals;

class LiveTest : public ProgramTest {
protected:
    LiveTest() { store("in.ts", sample()); }
};

/// A packet of the given number and timestamp.
std::unique_ptr<RtpPacket> media(std::uint16_t number, std::uint32_t timestamp, std::uint32_t ssrc = 1) {
    Bytes bytes = rtpPacket(number, 200);
    writeBigEndian32(&bytes[4], timestamp);
    writeBigEndian32(&bytes[8], ssrc);
    return std::make_unique<RtpPacket>(bytes.data(), bytes.size());
}

TEST(ReceptionMeterTest, CountsGapsRestartsAndForeignPackets) {
    auto meter = std::make_unique<ReceptionMeter>();
    SteadyTime now = SteadyTime{} + 1h;
    const auto arrive = [&](std::uint16_t number, std::uint32_t ssrc = 1) {
        now += 1ms;
        return meter->arrive(media(number, number * 90U, ssrc)->view, now);
    };
    for (const std::uint16_t number : std::initializer_list<std::uint16_t>{65533, 65534, 2, 0, 3})
        EXPECT_TRUE(arrive(number));
    EXPECT_EQ(meter->figures().longestGap, 3U) << "65535 to 1";
    EXPECT_EQ(meter->figures().restarts, 0U);
    arrive(20'000);
    arrive(20'001, 2);
    EXPECT_EQ(meter->figures().restarts, 2U);
    EXPECT_EQ(meter->figures().longestGap, 3U);
    EXPECT_EQ(meter->figures().media, 7U);
    Bytes report(28, 0);
    report[0] = 0x80;
    report[1] = 200;
    EXPECT_FALSE(meter->arrive(viewOf(report), now));
    EXPECT_EQ(meter->figures().foreign, 1U);
    meter->deliver(media(20'001, 0)->view, now + 40ms);
    meter->deliver(media(19'999, 0)->view, now + 90ms);  // rebuilt, it never arrived
    EXPECT_EQ(meter->takeLatency(), 40ms);
    EXPECT_EQ(meter->takeLatency(), 0ms);
}

TEST(DelayLineTest, HoldsPacketsAsLongAsItShould) {
    std::vector<std::size_t> out;
    DelayLine line({.delay = 20, .jitter = 10},
                   [&](StreamPort, const auto& packet) { out.push_back(packet.size()); });
    const SteadyTime start{};
    for (std::size_t i = 1; i <= 100; ++i) line.push(StreamPort::media, Bytes(i), start);
    line.letOut(start + 19ms);
    EXPECT_TRUE(out.empty());
    ASSERT_TRUE(line.next());
    EXPECT_GE(*line.next(), start + 20ms);
    line.letOut(start + 25ms);
    EXPECT_GT(out.size(), 20U);
    EXPECT_LT(out.size(), 80U);
    line.letOut(start + 30ms);
    EXPECT_EQ(out.size(), 100U);
    EXPECT_FALSE(std::ranges::is_sorted(out)) << "jitter reorders";
    EXPECT_FALSE(line.next());
}

TEST_F(LiveTest, ALoopedFileRunsOn) {
    for (const auto& bitRate : {std::optional<std::uint64_t>(), std::optional<std::uint64_t>(5'000'000)}) {
        FileMediaInput input(pathOf("in.ts"),
                             {.bitRate = bitRate, .loop = true, .interfaceName = "", .source = {}});
        DuePacket next;
        std::uint16_t number = 0;
        std::uint32_t timestamp = 0;
        SteadyTime due{};
        for (int i = 0; i < 3000; ++i) {
            ASSERT_EQ(input.read(next), MediaInput::Got::packet);
            EXPECT_EQ(next.packet->view.sequenceNumber(), number++);
            if (i > 0) {
                const auto step = std::chrono::duration<double, std::milli>(*next.due - due).count();
                const double ticks = static_cast<std::int32_t>(next.packet->view.timestamp() - timestamp);
                EXPECT_GT(step, 0.0) << i;
                EXPECT_LT(step, 20.0) << i;
                EXPECT_NEAR(ticks / 90, step, 0.1) << i;
            }
            due = *next.due;
            timestamp = next.packet->view.timestamp();
        }
    }
}

TEST_F(LiveTest, WhatStandsBeforeABreakInTheFileLeaves) {
    Bytes cut = sample();
    cut.resize(20 * 7 * 188 + 3 * 188 + 100);
    store("cut.ts", cut);
    UdpListeners listeners(6);
    const Outcome result =
        run(fmt::format("send cut.ts --to 127.0.0.1:{} --mode row --columns 5 --rows 4 --bitrate 20M",
                        listeners.firstPort()));
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.text.find("truncated"), std::string::npos) << result.text;
    EXPECT_EQ(listeners.datagrams(0).size(), 21U);
    EXPECT_EQ(listeners.datagrams(2).size(), 4U);
}

TEST_F(LiveTest, RefusesWhatCannotBeMeant) {
    for (const auto& [arguments, text] :
         {std::pair{"send in.ts --to 127.0.0.1:65534 --mode both --columns 5 --rows 5", "two and four above"},
          std::pair{"send in.ts --to nowhere:5004 --mode both --columns 5 --rows 5", "has no address"},
          std::pair{"send in.ts --to 127.0.0.1:5004 --mode both --columns 5 --rows 5 --bitrate 5x",
                    "bit rate"},
          std::pair{"receive --from 239.1.1.1:5004 null --interface none77", "no such network interface"},
          std::pair{"receive --from 127.0.0.1:5004 null --source 10.0.0.1", "of a group alone"},
          std::pair{"receive --from 127.0.0.1:5004 out.mp4", "out.mp4"},
          std::pair{"relay --from 127.0.0.1:5004 --to 127.0.0.1:6004 --loss 2", "loss"}}) {
        const Outcome result = run(arguments);
        EXPECT_EQ(result.status, 2) << arguments << result.text;
        EXPECT_NE(result.text.find(text), std::string::npos) << result.text;
    }
    EXPECT_EQ(run("send none.ts --to 127.0.0.1:5004 --mode both --columns 5 --rows 5").status, 1);
}

}  // namespace
}  // namespace mvrtpfec
