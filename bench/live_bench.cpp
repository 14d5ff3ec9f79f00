#include "bench/live_bench.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "bench/peer_program.h"
#include "bench/silent_sockets.h"
#include "platform/process/process.h"

namespace mvrtpfec::bench {

namespace {

using namespace std::chrono_literals;
using Command = std::vector<std::string>;

constexpr int port = 35000;
constexpr int repetitions = 3;
constexpr std::size_t payload = 1316;

/// A folder that goes with its files.
class Scratch {
public:
    Scratch() { std::filesystem::create_directories(path_); }
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::string file(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_ =
        std::filesystem::temp_directory_path() / fmt::format("mvrtpfec-bench-{}", getpid());
};

std::string program() {
    return platform::programPath().replace_filename("mvrtpfec");
}

std::string sampleFile() {
    return std::string(MVRTPFEC_SAMPLES) + "/sample.ts";
}

/// Some seconds of stream for senders that don't wait.
std::size_t writeLongFile(const std::string& path) {
    constexpr int rounds = 100;
    std::ifstream in(sampleFile(), std::ios::binary);
    const std::string once(std::istreambuf_iterator<char>(in), {});
    std::ofstream out(path, std::ios::binary);
    for (int i = 0; i < rounds; ++i) out << once;
    return rounds * once.size() / payload;
}

Command sendCommand(const std::string& file, const std::string& rate) {
    return {program(),  "send",     file,        "--to", fmt::format("127.0.0.1:{}", port),
            "--preset", "balanced", "--bitrate", rate,   "--fec-format",
            "standard"};
}

/// A pipeline as one would type it.
Command pipeline(const std::string& text) {
    return {"sh", "-c", "exec gst-launch-1.0 -q -e " + text};
}

Command gstreamerSend(const std::string& file) {
    const std::string output = "udpsink sync=false async=false host=127.0.0.1 port=";
    return pipeline(
        fmt::format("filesrc location={} ! tsparse set-timestamps=true alignment=7 ! rtpmp2tpay pt=33 "
                    "ssrc=0 mtu=1328 ! rtpst2022-1-fecenc name=enc columns=10 rows=10 enc.src ! {}{} "
                    "enc.fec_0 ! {}{} enc.fec_1 ! {}{}",
                    file, output, port, output, port + 2, output, port + 4));
}

Command gstreamerReceive() {
    const std::string input =
        "caps=application/x-rtp,media=video,clock-rate=90000,encoding-name=MP2T,payload={} port={} "
        "buffer-size=8388608";
    return pipeline(fmt::format(
        "rtpst2022-1-fecdec size-time=1000000000 name=fec udpsrc {} ! queue ! fec.fec_0 "
        "udpsrc {} ! queue ! fec.fec_1 udpsrc {} ! queue ! fec.sink "
        "fec.src ! rtpjitterbuffer latency=200 ! rtpmp2tdepay ! fakesink",
        fmt::format(fmt::runtime(input), 96, port + 2), fmt::format(fmt::runtime(input), 96, port + 4),
        fmt::format(fmt::runtime(input), 33, port)));
}

Command receiveCommand(const std::string& json) {
    return {program(), "receive", "--from", fmt::format("127.0.0.1:{}", port), "null", "--json", json};
}

bool isGStreamerThere() {
    try {
        PeerProgram({"gst-inspect-1.0", "rtpst2022-1-fecdec"}).finish();
        return true;
    } catch (const std::runtime_error&) {
        std::fprintf(stderr, "mvrtpfec_bench: GStreamer is not installed; live is compared with nothing\n");
        return false;
    }
}

double median(std::array<double, repetitions> values) {
    std::ranges::sort(values);
    return values[repetitions / 2];
}

/// CPU nanoseconds a packet of a sender, its datagrams left to sockets that nobody reads.
double sendOnce(const Command& sender, std::size_t packets) {
    const SilentSockets sockets(port);
    return PeerProgram(sender).finish().all() * 1e9 / static_cast<double>(packets);
}

/// CPU nanoseconds a packet of a receiver of 100 Mbit/s, without its start.
double receiveOnce(const Command& receiver) {
    constexpr double packetsPerSecond = 100e6 / 8 / payload;
    constexpr auto time = 4s;
    Command sender = sendCommand(sampleFile(), "100M");
    sender.push_back("--loop");
    PeerProgram receiving(receiver);
    std::this_thread::sleep_for(1s);
    const double before = receiving.spent();
    PeerProgram sending(sender);
    std::this_thread::sleep_for(time);
    sending.interrupt();
    sending.finish();
    const double after = receiving.spent();
    receiving.interrupt();
    receiving.finish();
    return (after - before) * 1e9 / (packetsPerSecond * std::chrono::duration<double>(time).count());
}

/// What a second has to deliver at 1 Gbit/s and what gets lost of it at the sockets, in datagrams.
void measureGigabit(const Scratch& scratch, Measurements& measured) {
    constexpr double packetsPerSecond = 1e9 / 8 / payload;
    constexpr auto time = 5s;
    const std::string json = scratch.file("gigabit.jsonl");
    PeerProgram receiving(receiveCommand(json));
    std::this_thread::sleep_for(1s);
    Command sender = sendCommand(sampleFile(), "1G");
    sender.push_back("--loop");
    PeerProgram sending(sender);
    std::this_thread::sleep_for(time);
    sending.interrupt();
    const double sendTime = sending.finish().all();
    std::this_thread::sleep_for(500ms);
    receiving.interrupt();
    const double receiveTime = receiving.finish().all();
    std::ifstream lines(json);
    nlohmann::json total;
    for (std::string line; std::getline(lines, line);) total = nlohmann::json::parse(line)["total"];
    const auto media = total["media_packets"].get<double>();
    const double sent = packetsPerSecond * std::chrono::duration<double>(time).count();
    std::printf(
        "\n1 Gbit/s for %d s: %.0f packets received of about %.0f, %.0f lost, %.0f dropped at the sockets; "
        "CPU a packet: send %.0f ns, receive %.0f ns\n",
        static_cast<int>(time.count()), media, sent, total["lost_packets"].get<double>(),
        total["overrun_datagrams"].get<double>(), sendTime * 1e9 / media, receiveTime * 1e9 / media);
    measured["live/1 Gbit/s, datagrams lost"] =
        total["lost_packets"].get<double>() + total["overrun_datagrams"].get<double>();
    measured["live/1 Gbit/s, sent over received"] = sent / media;
}

}  // namespace

void measureLive(Measurements& measured) {
    const Scratch scratch;
    measureGigabit(scratch, measured);
    addTarget({"live/1 Gbit/s, datagrams lost", "live/1 Gbit/s, datagrams lost", "", 0});
    addTarget({"live/1 Gbit/s, sent over received", "live/1 Gbit/s, sent over received", "", 1.02});
    if (!isGStreamerThere()) return;
    const std::string file = scratch.file("long.ts");
    const std::size_t packets = writeLongFile(file);
    std::array<std::array<double, repetitions>, 4> times{};
    for (std::size_t i = 0; i < repetitions; ++i) {
        times[0][i] = sendOnce(sendCommand(file, "50G"), packets);
        times[1][i] = sendOnce(gstreamerSend(file), packets);
        times[2][i] = receiveOnce(receiveCommand(scratch.file("receive.jsonl")));
        times[3][i] = receiveOnce(gstreamerReceive());
    }
    constexpr std::array names{"live/send", "gstreamer/send", "live/receive", "gstreamer/receive"};
    for (std::size_t i = 0; i < names.size(); ++i) measured[names[i]] = median(times[i]);
    addTarget({"live/send to GStreamer's st2022-1", "live/send", "gstreamer/send", 1.0});
    addTarget({"live/receive to GStreamer's st2022-1", "live/receive", "gstreamer/receive", 1.0});
}

}  // namespace mvrtpfec::bench
