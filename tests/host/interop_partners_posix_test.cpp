// Standard FEC with other people's programs at the other end.

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/host/program_run.h"
#include "tests/host/sample_streams.h"
#include "tests/host/udp_listeners.h"

namespace mvrtpfec {
namespace {

bool isInstalled(const std::string& command) {
    return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

class InteropPartner : public ProgramTest, public testing::WithParamInterface<std::pair<int, int>> {
protected:
    InteropPartner() { store("in.ts", sample()); }

    /// A program that is interrupted after some seconds.
    Outcome runFor(int seconds, const std::string& command) const {
        return runProcess("timeout", fmt::format("--foreground -s INT {} {}", seconds, command), pathOf(""));
    }
    /// Checksums of a transport stream's coded pictures.
    std::vector<std::string> pictures(const std::string& file) const {
        runProcess("ffmpeg", "-y -v error -i " + file + " -map 0:v -c copy -f framemd5 pictures.md5",
                   pathOf(""));
        std::ifstream lines(pathOf("pictures.md5"));
        std::vector<std::string> all;
        for (std::string line; std::getline(lines, line);)
            if (!line.starts_with("#")) all.push_back(line.substr(line.rfind(' ') + 1));
        return all;
    }
    /// Loses media on its way.
    Outcome relay(int seconds, std::uint16_t from, std::uint16_t to) const {
        return runFor(seconds,
                      fmt::format("{} relay --from 127.0.0.1:{} --to 127.0.0.1:{} --loss 0.02 --fec-loss 0 "
                                  "--seed 3",
                                  program().string(), from, to));
    }
};

TEST_P(InteropPartner, GStreamerRepairsOurStreamToTheLastByte) {
    if (!isInstalled("gst-inspect-1.0 rtpst2022-1-fecdec"))
        GTEST_SKIP() << "rtpst2022-1-fecdec is not installed";
    const auto [columns, rows] = GetParam();
    const std::uint16_t far = UdpListeners(40).firstPort();
    const auto near = static_cast<std::uint16_t>(far + 20);
    const std::string input =
        " caps=application/x-rtp,media=video,clock-rate=90000,encoding-name=MP2T,payload=";
    std::thread receiver([&, this] {
        runFor(7,
               fmt::format("gst-launch-1.0 -q -e rtpst2022-1-fecdec size-time=1000000000 name=fec "
                           "udpsrc port={} {}96 ! queue ! fec.fec_0 udpsrc port={} {}96 ! queue ! fec.fec_1 "
                           "udpsrc port={} {}33 ! queue ! fec.sink "
                           "fec.src ! rtpjitterbuffer latency=500 ! rtpmp2tdepay ! filesink location=out.ts",
                           far + 2, input, far + 4, input, far, input));
    });
    Outcome relayed;
    std::thread network([&, this] { relayed = relay(6, near, far); });
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    const Outcome sent =
        run(fmt::format("send in.ts --to 127.0.0.1:{} --mode both --columns {} --rows {} --bitrate 6M "
                        "--fec-format standard",
                        near, columns, rows));
    network.join();
    receiver.join();
    EXPECT_EQ(sent.status, 0) << sent.text;
    EXPECT_EQ(relayed.text.find("dropped 0 media"), std::string::npos) << relayed.text;
    EXPECT_TRUE(load("out.ts") == sample()) << load("out.ts").size();
}

TEST_P(InteropPartner, WeRepairFfmpegsStream) {
    if (!isInstalled("ffmpeg -version")) GTEST_SKIP() << "ffmpeg is not installed";
    const auto [columns, rows] = GetParam();
    const std::uint16_t far = UdpListeners(40).firstPort();
    const auto near = static_cast<std::uint16_t>(far + 20);
    std::thread receiver([&, this] {
        runFor(10, fmt::format("{} receive --from 127.0.0.1:{} out.ts --json figures.jsonl --log run.log",
                               program().string(), far));
    });
    Outcome relayed;
    std::thread network([&, this] { relayed = relay(9, near, far); });
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    const Outcome sent =
        runProcess("timeout",
                   fmt::format("20 ffmpeg -v error -re -i in.ts -c copy -f rtp_mpegts -fec prompeg=l={}:d={} "
                               "rtp://127.0.0.1:{}",
                               columns, rows, near),
                   pathOf(""));
    network.join();
    receiver.join();
    EXPECT_EQ(sent.status, 0) << sent.text;
    const Bytes lines = load("figures.jsonl");
    const std::string text(lines.begin(), lines.end());
    const auto total = nlohmann::json::parse(text.substr(text.rfind('\n', text.size() - 2) + 1))["total"];
    EXPECT_GT(total["lost"], 5);
    EXPECT_EQ(total["rebuilt"], total["lost"]);
    EXPECT_EQ(total["fec_not_turned_packets"], 0);
    // It packs the stream anew and keeps the end of it.
    const auto sentPictures = pictures("in.ts");
    const auto received = pictures("out.ts");
    ASSERT_GT(received.size() + 3, sentPictures.size());
    for (std::size_t i = 0; i + 1 < received.size(); ++i) EXPECT_EQ(received[i], sentPictures[i]) << i;
}

INSTANTIATE_TEST_SUITE_P(Matrices, InteropPartner, testing::Values(std::pair{5, 5}), [](const auto& matrix) {
    return fmt::format("{}x{}", matrix.param.first, matrix.param.second);
});

}  // namespace
}  // namespace mvrtpfec
