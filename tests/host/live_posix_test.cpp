#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include <fmt/format.h>
#include <gtest/gtest.h>

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
        return runProcess(
            "timeout",
            fmt::format("--foreground -s INT 6 {} receive --from 127.0.0.1:{} out.ts --json figures.jsonl",
                        program().string(), far),
            pathOf(""));
    });
    Beside relay([&] {
        return runProcess(
            "timeout",
            fmt::format("--foreground -s INT 5 {} relay --from 127.0.0.1:{} --to 127.0.0.1:{} --loss 0.01 "
                        "--burst 2 --delay 10 --jitter 1 --duplicate 0.02",
                        program().string(), near, far),
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
    EXPECT_GT(last["total"]["rebuilt"], 0);
    EXPECT_EQ(last["total"]["delivered"], 1140);
}

}  // namespace
}  // namespace mvrtpfec
