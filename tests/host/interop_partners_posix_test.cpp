// Standard FEC with other people's programs at the other end.

#include <algorithm>
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

/// Each way at once with all four matrices, each on ports of its own.
class InteropPartner : public ProgramTest {
protected:
    InteropPartner() { store("in.ts", sample()); }

    struct Matrix {
        int columns;
        int rows;
        std::uint16_t near;  ///< port of the media where they are sent to
        std::uint16_t far;   ///< where the relay sends them on
        std::string name;

        /// Bytes of the stream in whole matrices: what is behind them lacks FEC packets when the file ends.
        std::size_t protectedBytes() const {
            constexpr std::size_t packets = 1140;
            constexpr std::size_t payload = 1316;
            const auto matrix = static_cast<std::size_t>(columns * rows);
            return packets / matrix * matrix * payload;
        }
    };

    template <class Work>
    void withEachMatrix(Work work) const {
        const std::uint16_t ports = UdpListeners(80).firstPort();
        std::vector<std::thread> threads;
        for (const auto& [columns, rows] :
             {std::pair{5, 5}, std::pair{4, 4}, std::pair{10, 10}, std::pair{20, 5}}) {
            const auto near = static_cast<std::uint16_t>(ports + 20 * threads.size());
            threads.emplace_back(work, Matrix{columns, rows, near, static_cast<std::uint16_t>(near + 10),
                                              fmt::format("{}x{}", columns, rows)});
        }
        for (std::thread& thread : threads) thread.join();
    }
    /// A program that is interrupted after some seconds.
    Outcome runFor(int seconds, const std::string& command) const {
        return runProcess("timeout", fmt::format("--foreground -s INT {} {}", seconds, command), pathOf(""));
    }
    Outcome receive(int seconds, const Matrix& matrix) const {
        return runFor(seconds, fmt::format("{} receive --from 127.0.0.1:{} {}.ts --json {}.jsonl",
                                           program().string(), matrix.far, matrix.name, matrix.name));
    }
    /// Loses media on its way.
    Outcome relay(int seconds, const Matrix& matrix) const {
        return runFor(seconds,
                      fmt::format("{} relay --from 127.0.0.1:{} --to 127.0.0.1:{} --loss 0.03 --fec-loss 0 "
                                  "--seed 3",
                                  program().string(), matrix.near, matrix.far));
    }
    /// The figures of receive().
    nlohmann::json totals(const Matrix& matrix) const {
        const Bytes lines = load(matrix.name + ".jsonl");
        const std::string text(lines.begin(), lines.end());
        return nlohmann::json::parse(text.substr(text.rfind('\n', text.size() - 2) + 1))["total"];
    }
    /// Checksums of a transport stream's coded pictures.
    std::vector<std::string> pictures(const std::string& file) const {
        runProcess("ffmpeg", fmt::format("-y -v error -i {0} -map 0:v -c copy -f framemd5 {0}.md5", file),
                   pathOf(""));
        std::ifstream lines(pathOf(file + ".md5"));
        std::vector<std::string> all;
        for (std::string line; std::getline(lines, line);)
            if (!line.starts_with("#")) all.push_back(line.substr(line.rfind(' ') + 1));
        return all;
    }
    void expectSameStart(const std::string& file, std::size_t bytes) const {
        Bytes received = load(file);
        ASSERT_GE(received.size(), bytes) << file;
        const Bytes sent = sample();
        EXPECT_TRUE(
            std::equal(received.begin(), received.begin() + static_cast<std::ptrdiff_t>(bytes), sent.begin()))
            << file;
    }
};

TEST_F(InteropPartner, GStreamerRepairsOurStreams) {
    if (!isInstalled("gst-inspect-1.0 rtpst2022-1-fecdec"))
        GTEST_SKIP() << "rtpst2022-1-fecdec is not installed";
    withEachMatrix([this](const Matrix& matrix) {
        const std::string input =
            " caps=application/x-rtp,media=video,clock-rate=90000,encoding-name=MP2T,payload=";
        std::thread receiver([&, this] {
            runFor(8, fmt::format(
                          "gst-launch-1.0 -q -e rtpst2022-1-fecdec size-time=1000000000 name=fec "
                          "udpsrc port={} {}96 ! queue ! fec.fec_0 udpsrc port={} {}96 ! queue ! fec.fec_1 "
                          "udpsrc port={} {}33 ! queue ! fec.sink "
                          "fec.src ! rtpjitterbuffer latency=500 ! rtpmp2tdepay ! filesink location={}.ts",
                          matrix.far + 2, input, matrix.far + 4, input, matrix.far, input, matrix.name));
        });
        Outcome relayed;
        std::thread network([&, this] { relayed = relay(7, matrix); });
        std::this_thread::sleep_for(std::chrono::seconds(2));
        const Outcome sent =
            run(fmt::format("send in.ts --to 127.0.0.1:{} --mode both --columns {} --rows {} --bitrate 6M "
                            "--fec-format standard",
                            matrix.near, matrix.columns, matrix.rows));
        network.join();
        receiver.join();
        EXPECT_EQ(sent.status, 0) << sent.text;
        EXPECT_EQ(relayed.text.find("dropped 0 media"), std::string::npos) << relayed.text;
        expectSameStart(matrix.name + ".ts", matrix.protectedBytes());
    });
}

TEST_F(InteropPartner, WeRepairGStreamersStreams) {
    if (!isInstalled("gst-inspect-1.0 rtpst2022-1-fecenc"))
        GTEST_SKIP() << "rtpst2022-1-fecenc is not installed";
    withEachMatrix([this](const Matrix& matrix) {
        std::thread receiver([&, this] { receive(9, matrix); });
        std::thread network([&, this] { relay(8, matrix); });
        std::this_thread::sleep_for(std::chrono::seconds(1));
        const std::string output = "udpsink async=false host=127.0.0.1 port=";
        const Outcome sent = runFor(
            7, fmt::format(
                   "gst-launch-1.0 -q -e filesrc location=in.ts ! tsparse set-timestamps=true alignment=7 ! "
                   "rtpmp2tpay pt=33 ssrc=0 mtu=1328 ! rtpst2022-1-fecenc name=enc columns={} rows={} "
                   "enc.src ! {}{} enc.fec_0 ! {}{} sync=false enc.fec_1 ! {}{} sync=false",
                   matrix.columns, matrix.rows, output, matrix.near, output, matrix.near + 2, output,
                   matrix.near + 4));
        network.join();
        receiver.join();
        EXPECT_EQ(sent.status, 0) << sent.text;
        EXPECT_GT(totals(matrix)["rebuilt_packets"], 20) << matrix.name;
        // It ends the stream in an order of its own.
        constexpr std::size_t inOrder = 1'450'000;
        expectSameStart(matrix.name + ".ts", std::min(inOrder, matrix.protectedBytes()));
    });
}

TEST_F(InteropPartner, WeRepairFfmpegsStreams) {
    if (!isInstalled("ffmpeg -version")) GTEST_SKIP() << "ffmpeg is not installed";
    const auto sentPictures = pictures("in.ts");
    withEachMatrix([&, this](const Matrix& matrix) {
        std::thread receiver([&, this] { receive(10, matrix); });
        std::thread network([&, this] { relay(9, matrix); });
        std::this_thread::sleep_for(std::chrono::seconds(1));
        const Outcome sent = runProcess(
            "timeout",
            fmt::format("20 ffmpeg -v error -re -i in.ts -c copy -f rtp_mpegts -fec prompeg=l={}:d={} "
                        "rtp://127.0.0.1:{}",
                        matrix.columns, matrix.rows, matrix.near),
            pathOf(""));
        network.join();
        receiver.join();
        EXPECT_EQ(sent.status, 0) << sent.text;
        const auto total = totals(matrix);
        EXPECT_GT(total["rebuilt_packets"], 5) << matrix.name;
        EXPECT_EQ(total["fec_not_turned_packets"], 0) << matrix.name;
        // It packs the stream anew and keeps the end of it; the last matrix may lack FEC packets.
        const auto received = pictures(matrix.name + ".ts");
        ASSERT_GT(received.size(), sentPictures.size() / 2) << matrix.name;
        const std::size_t sure = received.size() * 8 / 10;
        for (std::size_t i = 0; i < sure; ++i) EXPECT_EQ(received[i], sentPictures[i]) << matrix.name << i;
    });
}

TEST_F(InteropPartner, FfmpegReadsWhatWeRepairedAsRtp) {
    if (!isInstalled("ffmpeg -version")) GTEST_SKIP() << "ffmpeg is not installed";
    const std::uint16_t port = UdpListeners(20).firstPort();
    std::ofstream(pathOf("out.sdp")) << fmt::format(
        "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=video {} RTP/AVP 33\n", port);
    std::thread reader([&, this] {
        runFor(9,
               "ffmpeg -y -v error -protocol_whitelist file,udp,rtp -listen_timeout 3 -i out.sdp -map 0:v -c "
               "copy -f mpegts "
               "out.ts");
    });
    std::thread receiver([&, this] {
        runFor(7, fmt::format("{} receive --from 127.0.0.1:{} rtp://127.0.0.1:{}", program().string(),
                              port + 10, port));
    });
    std::this_thread::sleep_for(std::chrono::seconds(1));
    const Outcome sent =
        run(fmt::format("send in.ts --to 127.0.0.1:{} --preset low-delay --bitrate 6M", port + 10));
    receiver.join();
    reader.join();
    EXPECT_EQ(sent.status, 0) << sent.text;
    const auto sentPictures = pictures("in.ts");
    const auto received = pictures("out.ts");
    // It cuts the last one where the stream ended.
    ASSERT_GE(received.size(), 140U);
    for (std::size_t i = 0; i + 1 < received.size(); ++i) EXPECT_EQ(received[i], sentPictures[i]) << i;
}

}  // namespace
}  // namespace mvrtpfec
