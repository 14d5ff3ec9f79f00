#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <thread>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/host/program_run.h"
#include "tests/host/sample_streams.h"
#include "tests/host/udp_replay-posix.h"

namespace mvrtpfec {
namespace {

bool isInstalled(const std::string& command) {
    return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

class StreamPartner : public ProgramTest {
protected:
    /// Checksums of what ffmpeg decoded, in its order.
    std::vector<std::string> checksums(const std::string& name) const {
        std::ifstream file(pathOf(name));
        std::vector<std::string> all;
        for (std::string line; std::getline(file, line);)
            if (!line.starts_with("#")) all.push_back(line.substr(line.rfind(' ') + 1));
        return all;
    }
};

TEST_F(StreamPartner, FfmpegDecodesTheLoopedFilesWithoutAnError) {
    if (!isInstalled("ffmpeg -version")) GTEST_SKIP() << "ffmpeg is not installed";
    const std::string video = streamPath("h264_bframes_hrd.264").string();
    ASSERT_EQ(runProcess("ffmpeg", "-v error -i " + video + " -f framemd5 sent.md5", pathOf("")).status, 0);
    const UdpReplay ports;
    std::thread sender([&] {
        runProcess("timeout",
                   fmt::format("-s INT 12 {} stream {} {} --to 127.0.0.1:{} --sdp out.sdp --loop",
                               program().string(), video, streamPath("aac_lc.aac").string(), ports.port()),
                   pathOf(""));
    });
    const Outcome ffmpeg = runProcess("sh",
                                      "-c 'for i in $(seq 100); do test -s out.sdp && break; sleep 0.1; "
                                      "done; timeout 11 ffmpeg -v error -y "
                                      "-protocol_whitelist file,udp,rtp -listen_timeout 4 -i out.sdp -t 2 "
                                      "-map 0:v -f framemd5 video.md5 -t 2 -map "
                                      "0:a -f framemd5 audio.md5 </dev/null'",
                                      pathOf(""));
    sender.join();
    EXPECT_EQ(ffmpeg.text, "");
    const auto sent = checksums("sent.md5");
    const auto decoded = checksums("video.md5");
    EXPECT_GE(decoded.size(), 40U);
    const std::set<std::string> known(sent.begin(), sent.end());
    for (const auto& picture : decoded) EXPECT_TRUE(known.contains(picture));
    EXPECT_GE(checksums("audio.md5").size(), 80U);
}

}  // namespace
}  // namespace mvrtpfec
