#include <array>
#include <vector>

#include <asio/ip/udp.hpp>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "core/big_endian.h"
#include "tests/host/program_run.h"
#include "tests/host/sample_streams.h"
#include "tests/host/udp_listeners.h"

namespace mvrtpfec {
namespace {

class StreamCommand : public ProgramTest {
protected:
    static std::string stream(const std::string& name) { return streamPath(name).string() + " "; }
    Outcome send(const std::string& inputs, const UdpListeners& to, const std::string& options = "") const {
        return run(
            fmt::format("stream {}--to 127.0.0.1:{} --sdp out.sdp {}", inputs, to.firstPort(), options));
    }
    std::string sdp() const {
        const Bytes bytes = load("out.sdp");
        return {bytes.begin(), bytes.end()};
    }
};

/// Wall time in seconds at which a stream's first packet is presented, by one of its reports.
double startBy(const Bytes& report, const Bytes& firstPacket, double clockRate) {
    const double wall = readBigEndian32(&report[8]) + readBigEndian32(&report[12]) / 4294967296.0;
    const std::uint32_t since = readBigEndian32(&report[16]) - readBigEndian32(&firstPacket[4]);
    return wall - static_cast<std::int32_t>(since) / clockRate;
}

TEST_F(StreamCommand, SendsItsFilesInTimeWithEachOther) {
    UdpListeners listeners(4);
    const Outcome result =
        send(stream("h264_bframes_hrd.264") + stream("aac_lc.aac"), listeners, "--cname me@here");
    ASSERT_EQ(result.status, 0) << result.text;
    std::vector<double> starts;
    for (const auto& [index, count, clockRate] : {std::array{0, 28, 90000}, std::array{2, 48, 48000}}) {
        const auto packets = listeners.datagrams(static_cast<std::size_t>(index));
        const auto reports = listeners.datagrams(static_cast<std::size_t>(index) + 1);
        ASSERT_EQ(packets.size(), static_cast<std::size_t>(count));
        ASSERT_GE(reports.size(), 3U);
        for (std::size_t i = 0; i < packets.size(); ++i) {
            EXPECT_EQ(readBigEndian16(&packets[i][2]), i);
            EXPECT_EQ(readBigEndian32(&packets[i][8]), readBigEndian32(&reports[0][4]));
        }
        for (const auto& report : reports) starts.push_back(startBy(report, packets[0], clockRate));
        EXPECT_EQ(std::string(reports[0].begin() + 38, reports[0].begin() + 45), "me@here");
    }
    for (const double start : starts) EXPECT_NEAR(start, starts[0], 0.001);
    EXPECT_NE(sdp().find(fmt::format("\r\nm=audio {} RTP/AVP 97\r\n", listeners.firstPort() + 2)),
              std::string::npos);
    EXPECT_EQ(sdp().find('\\'), std::string::npos);
}

TEST_F(StreamCommand, EveryPacketizedFormatLeaves) {
    UdpListeners listeners(14);
    const Outcome result =
        send(stream("h263.263") + stream("mpeg4.m4v") + stream("aac_latm.latm") + stream("aac_lc.aacraw") +
                 stream("h264_slices_aud.264") + stream("aac_crc.aac") + stream("h264_fields.264"),
             listeners, "--parameter-sets inband");
    ASSERT_EQ(result.status, 0) << result.text;
    for (std::size_t i = 0; i < 7; ++i) {
        EXPECT_GE(listeners.datagrams(2 * i).size(), 20U) << i;
        EXPECT_GE(listeners.datagrams(2 * i + 1).size(), 2U) << i;
    }
}

TEST_F(StreamCommand, RefusesWhatItCannotSend) {
    for (const auto& [arguments, text] :
         {std::pair{stream("hevc_slices_aud.265") + "--to 127.0.0.1:5004 --sdp out.sdp",
                    "hevc can't be packetized"},
          std::pair{stream("klv.bin") + "--to 127.0.0.1:5004 --sdp out.sdp", "name it as FILE:FORMAT"},
          std::pair{stream("aac_lc.aac") + "--to 127.0.0.1:5005 --sdp out.sdp", "even port"},
          std::pair{stream("aac_lc.aac") + "--to 300.0.0.1:5004 --sdp out.sdp", "has no address"},
          std::pair{stream("aac_lc.aac") + "--to 127.0.0.1:70000 --sdp out.sdp", "has no port"}}) {
        const Outcome result = run("stream " + arguments);
        EXPECT_EQ(result.status, 2) << result.text;
        EXPECT_NE(result.text.find(text), std::string::npos) << result.text;
    }
    const Outcome result = run("stream nothing.264 --to 127.0.0.1:5004 --sdp out.sdp");
    EXPECT_EQ(result.status, 1) << result.text;
}

TEST_F(StreamCommand, SelftestPassesOnTheSamplesAndNamesTheFilesItLacks) {
    const Outcome samples = run("selftest");
    EXPECT_EQ(samples.status, 0) << samples.text;
    EXPECT_NE(samples.text.find("Samples: 10 of 10 tests passed"), std::string::npos) << samples.text;
    const Outcome missing = run("selftest --data .");
    EXPECT_EQ(missing.status, 1);
    const auto list = missing.text.find("these files are to be supplied:");
    ASSERT_NE(list, std::string::npos) << missing.text;
    EXPECT_NE(missing.text.find("AAC-RAW-UnitTest.raw.aac", list), std::string::npos) << missing.text;
}

}  // namespace
}  // namespace mvrtpfec
