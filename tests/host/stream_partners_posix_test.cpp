// What other people's receivers make of the program's live streams.

#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <thread>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "host/io/capture_writer.h"
#include "tests/host/io_test_frames.h"
#include "tests/host/program_run.h"
#include "tests/host/sample_streams.h"
#include "tests/host/udp_listeners.h"

namespace mvrtpfec {
namespace {

bool isInstalled(const std::string& command) {
    return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

/// One of each format that is packetized from an elementary stream.
const std::vector<std::string> everyFormat{"h264_bframes_hrd.264", "mpeg4.m4v",     "h263.263",
                                           "aac_lc.aac",           "aac_latm.latm", "aac_lc.aacraw"};
constexpr std::size_t framesOfRawAac = 20;

class StreamPartner : public ProgramTest {
protected:
    /// Runs a receiver, ended after some seconds, since it may wait for ever.
    static constexpr const char* whenDescribed =
        "-c 'for i in $(seq 200); do test -s out.sdp && break; sleep 0.05; done; timeout --foreground -s INT "
        "{} "
        "</dev/null'";

    /// What `receiver` says while the files are sent to it.
    Outcome receiveEveryFormat(const std::string& receiver) const {
        std::string inputs;
        for (const auto& name : everyFormat) inputs += streamPath(name).string() + " ";
        const std::uint16_t port = UdpListeners(2 * everyFormat.size()).firstPort();
        Outcome sent;
        std::thread sender(
            [&] { sent = run(fmt::format("stream {} --to 127.0.0.1:{} --sdp out.sdp", inputs, port)); });
        const Outcome received =
            runProcess("sh", fmt::format(fmt::runtime(whenDescribed), receiver), pathOf(""));
        sender.join();
        EXPECT_EQ(sent.status, 0) << sent.text;
        return received;
    }

    /// Checksums of what ffmpeg decoded, in its order.
    std::vector<std::string> checksums(const std::string& name) const {
        std::ifstream file(pathOf(name));
        std::vector<std::string> all;
        for (std::string line; std::getline(file, line);)
            if (!line.starts_with("#")) all.push_back(line.substr(line.rfind(' ') + 1));
        return all;
    }
    std::vector<std::string> checksumsOfFile(const std::string& name) const {
        const Outcome direct = runProcess(
            "ffmpeg",
            "-v error -y -i " + streamPath(name).string() + " -fps_mode passthrough -f framemd5 direct.md5",
            pathOf(""));
        EXPECT_EQ(direct.status, 0) << direct.text;
        return checksums("direct.md5");
    }
};

TEST_F(StreamPartner, FfmpegDecodesEveryFormatAsFromTheFile) {
    if (!isInstalled("ffmpeg -version")) GTEST_SKIP() << "ffmpeg is not installed";
    std::string outputs;
    for (std::size_t i = 0; i < everyFormat.size(); ++i)
        outputs += fmt::format("-map 0:{0} -fps_mode passthrough -f framemd5 {0}.md5 ", i);
    // It ends when nothing comes for a second, for each stream in turn, and says so.
    const Outcome ffmpeg = receiveEveryFormat(
        "15 ffmpeg -v error -y -protocol_whitelist file,udp,rtp -listen_timeout 1 -i out.sdp " + outputs);
    std::istringstream said(ffmpeg.text);
    for (std::string line; std::getline(said, line);) {
        const bool isEnd = line.find("Connection timed out") != std::string::npos ||
                           line.find("Last message repeated") != std::string::npos;
        EXPECT_TRUE(isEnd) << line;
    }
    for (std::size_t i = 0; i < everyFormat.size(); ++i) {
        const std::string& name = everyFormat[i];
        const auto decoded = checksums(std::to_string(i) + ".md5");
        if (name.ends_with(".aacraw")) {
            EXPECT_EQ(decoded.size(), framesOfRawAac);
            continue;
        }
        auto expected = checksumsOfFile(name);
        // It may keep the last picture of MPEG-4 Visual, which nothing ends.
        if (name.ends_with(".m4v") && decoded.size() + 1 == expected.size()) expected.pop_back();
        EXPECT_EQ(decoded, expected) << name;
    }
}

TEST_F(StreamPartner, GStreamerDecodesEveryFormatAsFromTheFile) {
    if (!isInstalled("gst-inspect-1.0 sdpdemux") || !isInstalled("gst-inspect-1.0 avdec_h264"))
        GTEST_SKIP() << "GStreamer's sdpdemux or avdec_h264 is not installed";
    std::string branches;
    for (std::size_t i = 0; i < everyFormat.size(); ++i)
        branches +=
            fmt::format("d.stream_{0} ! decodebin ! filesink async=false sync=false location={0}.raw ", i);
    const Outcome received =
        receiveEveryFormat("7 gst-launch-1.0 -e filesrc location=out.sdp ! sdpdemux name=d " + branches);
    for (const char* trouble : {"ERROR", "WARN"})
        EXPECT_EQ(received.text.find(trouble), std::string::npos) << received.text;
    for (std::size_t i = 0; i < everyFormat.size(); ++i) {
        const std::string& name = everyFormat[i];
        const Bytes decoded = load(std::to_string(i) + ".raw");
        constexpr std::size_t frame = std::size_t{1024} * 2 * sizeof(float);
        if (name.ends_with(".aacraw")) {
            EXPECT_EQ(decoded.size(), framesOfRawAac * frame);
        } else if (name.ends_with(".latm")) {
            // It has no way to play the file. Its LATM element spoils the first frame.
            EXPECT_EQ(decoded.size(),
                      (unitsOfFile(streamPath(name), StreamType::aacLatm).units.size() - 1) * frame);
        } else {
            runProcess("timeout",
                       "60 gst-launch-1.0 -q filesrc location=" + streamPath(name).string() +
                           " ! decodebin ! filesink location=direct.raw",
                       pathOf(""));
            EXPECT_TRUE(decoded == load("direct.raw")) << name;
        }
    }
}

TEST_F(StreamPartner, FfmpegDecodesTheLoopedFilesWithoutAnError) {
    if (!isInstalled("ffmpeg -version")) GTEST_SKIP() << "ffmpeg is not installed";
    const std::string video = "h264_bframes_hrd.264";
    const std::uint16_t port = UdpListeners(4).firstPort();
    std::thread sender([&] {
        runProcess("timeout",
                   fmt::format("--foreground -s INT 5 {} stream {} {} --to 127.0.0.1:{} --sdp out.sdp --loop",
                               program().string(), streamPath(video).string(),
                               streamPath("aac_lc.aac").string(), port),
                   pathOf(""));
    });
    const Outcome ffmpeg =
        runProcess("sh",
                   fmt::format(fmt::runtime(whenDescribed),
                               "7 ffmpeg -v error -y -protocol_whitelist file,udp,rtp -i out.sdp "
                               "-t 2.5 -map 0:v -f framemd5 video.md5 -t 2.5 -map 0:a -f framemd5 audio.md5"),
                   pathOf(""));
    sender.join();
    EXPECT_EQ(ffmpeg.text, "");
    const auto sent = checksumsOfFile(video);
    const auto decoded = checksums("video.md5");
    EXPECT_GE(decoded.size(), 2 * sent.size()) << "twice around";
    const std::set<std::string> known(sent.begin(), sent.end());
    for (const auto& picture : decoded) EXPECT_TRUE(known.contains(picture));
    EXPECT_GE(checksums("audio.md5").size(), 100U);
}

// Where each report, by wall clock and media clock, puts the first packet of its stream.
TEST_F(StreamPartner, TsharkReadsTheSameTimesFromAllReports) {
    if (!isInstalled("tshark --version")) GTEST_SKIP() << "tshark is not installed";
    UdpListeners listeners(4);
    const std::uint16_t port = listeners.firstPort();
    const Outcome sent =
        run(fmt::format("stream {} {} --to 127.0.0.1:{} --sdp out.sdp", streamPath("mpeg4.m4v").string(),
                        streamPath("aac_lc.aac").string(), port));
    ASSERT_EQ(sent.status, 0) << sent.text;
    const auto capture = openCapture(pathOf("live.pcap"), FileFormat::pcap, LinkType::ipv4);
    for (std::uint16_t i = 0; i < 4; ++i) {
        for (const Bytes& datagram : listeners.datagrams(i))
            capture->writeFrame(
                std::chrono::seconds(1),
                wrap({"", LinkType::ipv4, {}, ipv4Header}, static_cast<std::uint16_t>(port + i), datagram));
    }
    capture->finish();
    const Outcome tshark =
        runProcess("tshark",
                   fmt::format("-r live.pcap -d udp.port=={},rtp -d udp.port=={},rtcp -d udp.port=={},rtp -d "
                               "udp.port=={},rtcp -T fields -E separator=, -e udp.dstport -e rtp.timestamp "
                               "-e rtcp.timestamp.ntp.msw -e rtcp.timestamp.ntp.lsw -e rtcp.timestamp.rtp",
                               port, port + 1, port + 2, port + 3),
                   pathOf(""));
    std::vector<double> starts;
    std::uint32_t first = 0;
    int readPort = 0;
    std::istringstream lines(tshark.text);
    for (std::string line; std::getline(lines, line);) {
        unsigned at = 0;
        unsigned timestamp = 0;
        unsigned seconds = 0;
        unsigned fraction = 0;
        if (std::sscanf(line.c_str(), "%u,,%u,%u,%u", &at, &seconds, &fraction, &timestamp) == 4) {
            const double rate = at == port + 1U ? 90000 : 48000;
            starts.push_back(seconds + fraction / 4294967296.0 -
                             static_cast<std::int32_t>(timestamp - first) / rate);
        } else if (std::sscanf(line.c_str(), "%u,%u", &at, &timestamp) == 2 &&
                   readPort != static_cast<int>(at)) {
            readPort = static_cast<int>(at);
            first = timestamp;
        }
    }
    ASSERT_GE(starts.size(), 6U) << tshark.text;
    for (const double start : starts) EXPECT_NEAR(start, starts.front(), 0.001);
}

}  // namespace
}  // namespace mvrtpfec
