#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>

#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/host/program_run.h"
#include "tests/host/udp_listeners.h"

namespace mvrtpfec {
namespace {

using namespace std::chrono_literals;

class LiveChainTest : public ProgramTest {
protected:
    LiveChainTest() { store("in.ts", sample()); }
};

/// A program that runs beside the test.
class Beside {
public:
    Beside(std::function<Outcome()> work) : thread_([this, work = std::move(work)] { outcome_ = work(); }) {
        std::this_thread::sleep_for(500ms);
    }
    ~Beside() {
        if (thread_.joinable()) thread_.join();
    }
    Beside(const Beside&) = delete;
    Beside& operator=(const Beside&) = delete;

    Outcome finish() {
        thread_.join();
        return outcome_;
    }

private:
    Outcome outcome_;
    std::thread thread_;
};

TEST_F(LiveChainTest, AStreamComesThroughALossyRelayWhole) {
    const std::uint16_t far = UdpListeners(6).firstPort();
    const std::uint16_t near = static_cast<std::uint16_t>(far + 20);
    Beside receiver([&] {
        return runProcess("timeout",
                          fmt::format("--foreground -s INT 6 {} receive --from 127.0.0.1:{},{},{} out.ts "
                                      "--json figures.jsonl --stats 500ms",
                                      program().string(), far, far + 3, far + 1),
                          pathOf(""));
    });
    Beside relay([&] {
        return runProcess(
            "timeout",
            fmt::format(
                "--foreground -s INT 5 {} relay --from 127.0.0.1:{} --to 127.0.0.1:{},{},{} --loss 0.01 "
                "--burst 2 --delay 10 --jitter 1 --duplicate 0.02",
                program().string(), near, far, far + 1, far + 3),
            pathOf(""));
    });
    const Outcome sent =
        run(fmt::format("send in.ts --to 127.0.0.1:{} --mode both --columns 5 --rows 5 --bitrate 6M", near));
    EXPECT_EQ(sent.status, 0) << sent.text;
    EXPECT_NE(relay.finish().text.find("sent "), std::string::npos);
    const Outcome received = receiver.finish();
    EXPECT_EQ(load("out.ts"), sample()) << received.text;
    EXPECT_NE(received.text.find("5 x 5"), std::string::npos) << received.text;
    const Bytes lines = load("figures.jsonl");
    const std::string text(lines.begin(), lines.end());
    const auto last = nlohmann::json::parse(text.substr(text.rfind('\n', text.size() - 2) + 1));
    EXPECT_GT(last["total"]["rebuilt_packets"], 0);
    EXPECT_EQ(last["total"]["lost_packets"], last["total"]["rebuilt_packets"]);
    EXPECT_EQ(last["total"]["delivered_packets"], 1140);
}

// Who pages through the figures, or pauses the program that draws them, must not stop the stream.
TEST_F(LiveChainTest, AReaderOfTheFiguresWhoStopsReadingStopsNothing) {
    const std::string pipe = pathOf("full").string();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int reader = open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    const Bytes much(4096);
    while (write(reader, much.data(), much.size()) > 0) continue;
    const std::uint16_t port = UdpListeners(6).firstPort();
    const std::string script = fmt::format(
        "exec timeout --foreground --preserve-status -k 5 -s INT 5 {} receive --from 127.0.0.1:{} out.ts "
        "--stats 100ms --json - > full 2>&1",
        program().string(), port);
    store("receive.sh", Bytes(script.begin(), script.end()));
    Beside receiver([&] { return runProcess("sh", "receive.sh", pathOf("")); });
    EXPECT_EQ(run(fmt::format("send in.ts --to 127.0.0.1:{} --preset balanced --bitrate 8M", port)).status,
              0);
    EXPECT_EQ(receiver.finish().status, 0);
    EXPECT_TRUE(load("out.ts") == sample());
    close(reader);
}

TEST_F(LiveChainTest, Ipv6AndGroupsBetweenTwoNetworks) {
    for (const char* needed : {"unshare -rn true", "ip -V", "nsenter -V"})
        if (std::system((std::string(needed) + " >/dev/null 2>&1").c_str()) != 0)
            GTEST_SKIP() << "not permitted or not installed here: " << needed;
    const Outcome result = runProcess(
        "unshare",
        fmt::format("-rn sh {}/tests/host/two_networks.sh {}", MVRTPFEC_SOURCE, program().string()),
        pathOf(""));
    ASSERT_EQ(result.status, 0) << result.text;
    const auto text = [this](const char* name) {
        const Bytes bytes = load(name);
        return std::string(bytes.begin(), bytes.end());
    };
    for (const char* name : {"ipv6", "group4", "group6", "source"})
        EXPECT_TRUE(load(name + std::string(".ts")) == sample())
            << name << load(name + std::string(".ts")).size() << text((name + std::string(".txt")).c_str());
    EXPECT_EQ(load("stranger.ts").size(), 0U) << "of another source than was asked for";
}

TEST_F(LiveChainTest, AnotherSenderWithAnotherMatrixIsFollowedAndToldOnce) {
    const std::uint16_t port = UdpListeners(6).firstPort();
    Beside receiver([&] {
        return runProcess(
            "timeout",
            fmt::format("--foreground --preserve-status -s INT 8 {} receive --from 127.0.0.1:{} out.ts --log "
                        "receive.log --guard-hold 50 --metrics 127.0.0.1:{}",
                        program().string(), port, port + 1),
            pathOf(""));
    });
    const auto send = [&](const std::string& options) {
        EXPECT_EQ(run(fmt::format("send in.ts --to 127.0.0.1:{} --mode both {}", port, options)).status, 0);
    };
    send("--columns 5 --rows 5 --bitrate 8M");
    // Silence, which the log tells too.
    std::this_thread::sleep_for(3500ms);
    send("--columns 10 --rows 4 --bitrate 10M");
    const Outcome received = receiver.finish();
    EXPECT_EQ(received.status, 0) << received.text;
    Bytes twice = sample();
    twice.insert(twice.end(), twice.begin(), twice.begin() + static_cast<std::ptrdiff_t>(sample().size()));
    EXPECT_TRUE(load("out.ts") == twice) << received.text;
    const Bytes log = load("receive.log");
    const std::string text(log.begin(), log.end());
    for (const char* once : {"the source began anew: 1, 1 in all", "the matrix is 10 x 4, it was 5 x 5",
                             "no media come any more", "media come again after"}) {
        const auto at = text.find(once);
        EXPECT_NE(at, std::string::npos) << once << text;
        EXPECT_EQ(text.find(once, at + 1), std::string::npos) << once << text;
    }
}

}  // namespace
}  // namespace mvrtpfec
