#include <atomic>
#include <chrono>
#include <cstdarg>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <CLI/CLI.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>
#include <fmt/format.h>

#include "host/commands/commands.h"
#include "host/commands/media_options.h"
#include "host/commands/options.h"
#include "host/commands/report.h"
#include "host/commands/stream_names.h"
#include "host/io/standard_error.h"
#include "host/log/program_log.h"
#include "host/media/session_file.h"
#include "host/stream/steady_clock.h"
#include "host/stream/stream_input.h"
#include "host/stream/udp_output.h"
#include "host/usage_error.h"
#include "platform/files/utf8_path.h"
#include "platform/process/signals.h"
#include "rtp_media/send/rtp_scheduler.h"

namespace mvrtpfec {

namespace {

using namespace std::chrono_literals;

constexpr std::int64_t second = unitsOfTime;
/// How far ahead of the clock files are read; packets leave two seconds behind it.
constexpr std::int64_t lead = second;
constexpr std::uint32_t transportPayloadType = 33;
constexpr std::uint32_t firstDynamicPayloadType = 96;
constexpr std::uint32_t dynamicPayloadTypes = 32;
constexpr std::size_t mostPort = 65535;

struct StreamOptions {
    std::vector<std::string> inputs;
    std::string to;
    std::filesystem::path sdp;
    std::string cname = "mvrtpfec";
    std::optional<FrameRate> frameRate;
    ParameterSetMode parameterSets = ParameterSetMode::sdp;
    bool loop = false;
    LogOptions log;
};

/// The scheduler's messages: the gravest on standard error, and all of them and the latenesses, which it
/// counts, handed on.
class SenderLog : public mvn::log::DummyLogPerf {
public:
    explicit SenderLog(mvn::log::ILogPerf& next) : next_(next) {}

    [[gnu::format(printf, 3, 4)]] void Log(std::uint32_t level, const char* format, ...) override {
        mvn::log::MessageBuffer message;
        va_list arguments;
        va_start(arguments, format);
        mvn::log::formatMessage(message, format, arguments);
        va_end(arguments);
        if (level == 0) tellPerson(fmt::format("mvrtpfec: {}\n", message.data()));
        next_.Log(level, "%s", message.data());
    }
    void AddPoliticChoices(std::int32_t amount) override {
        ++late_;
        next_.AddPoliticChoices(amount);
    }

    std::uint64_t late() const noexcept { return late_; }

private:
    mvn::log::ILogPerf& next_;
    std::atomic<std::uint64_t> late_{0};
};

/// A file and the two ports it goes to.
struct Lane {
    Lane(const StreamInputOptions& options, asio::io_context& context, const asio::ip::udp::endpoint& target)
        : input(options),
          bitRate(estimatedBitRate(options)),
          media(context, target),
          reports(context, {target.address(), static_cast<std::uint16_t>(target.port() + 1)}) {}

    StreamInput input;
    std::uint32_t bitRate;
    UdpOutput media;
    UdpOutput reports;
    bool over = false;
};

/// The sender and its lanes, which outlive it.
class Sending {
public:
    Sending(const StreamOptions& options, std::vector<std::unique_ptr<Lane>>& lanes, std::uint16_t port,
            const std::string& address, mvn::log::ILogPerf& log)
        : options_(options),
          lanes_(lanes),
          log_(log),
          scheduler_(&clock_, settings(options, *lanes.front(), address)) {
        scheduler_.setLogger(&log_);
        for (std::uint32_t i = 0; i < lanes.size(); ++i) {
            Lane& lane = *lanes[i];
            const bool transport = lane.input.format().type == StreamType::mpeg2ts;
            scheduler_.addStream(
                i + 1, lane.input.format().type, port + 2 * i,
                transport ? transportPayloadType : firstDynamicPayloadType + i % dynamicPayloadTypes,
                &lane.media, &lane.reports, &lane.input.units(), lane.bitRate, options.parameterSets);
        }
    }

    void run() {
        const std::int64_t start = SteadyClock::now();
        for (auto& lane : lanes_) lane->input.startAt(start);
        scheduler_.run();
        try {
            while (feed() && !platform::wasInterrupted() && !needsRestart()) {
                describeWhenReady();
                std::this_thread::sleep_for(5ms);
            }
        } catch (const std::exception&) {
            finish();
            throw;
        }
        finish();
    }

    /// The times have left the clock for good, as after the machine was suspended.
    bool needsRestart() const { return scheduler_.isRestartNeeded(); }

    std::uint64_t late() const { return log_.late(); }
    bool isDescribed() const { return described_; }

private:
    static RTPSchedulerSettings settings(const StreamOptions& options, const Lane& lane,
                                         const std::string& address) {
        RTPSchedulerSettings made;
        const std::string origin = lane.media.localAddress();
        made.names = {"mvrtpfec", origin, "mvrtpfec", std::nullopt, address};
        made.cname = options.cname;
        made.timestampMode = TimestampMode::decode;
        return made;
    }

    /// False when every file has ended.
    bool feed() {
        const std::int64_t until = SteadyClock::now() + lead;
        bool going = false;
        for (auto& lane : lanes_) {
            if (!lane->over) lane->over = !lane->input.feedUntil(until);
            going = going || !lane->over;
        }
        return going;
    }

    void finish() {
        if (needsRestart()) {
            scheduler_.abort();
            return scheduler_.waitForExit();
        }
        // A short file has been read before the first round. Nothing leaves for two seconds.
        for (int i = 0; i < 50 && !described_ && !platform::wasInterrupted(); ++i) {
            describeWhenReady();
            std::this_thread::sleep_for(10ms);
        }
        scheduler_.drain();  // a second interruption ends the program at once
    }

    void describeWhenReady() {
        if (described_ || !scheduler_.isSdpReady()) return;
        writeSession(options_.sdp, withLineEnds(scheduler_.getSdp()));
        described_ = true;
    }

    const StreamOptions& options_;
    std::vector<std::unique_ptr<Lane>>& lanes_;
    SteadyClock clock_;
    SenderLog log_;
    RTPScheduler scheduler_;
    bool described_ = false;
};

void runStream(const StreamOptions& options, mvn::log::ILogPerf& log) {
    platform::ignoreHangUp();
    const auto target = parseTarget(options.to);
    if (target.port() + 2 * options.inputs.size() - 1 > mostPort)
        throw UsageError("there are not enough ports above for so many streams");
    asio::io_context context;
    std::vector<std::unique_ptr<Lane>> lanes;
    for (const auto& text : options.inputs) {
        const auto named = parseStreamName(text);
        const auto port = static_cast<std::uint16_t>(target.port() + 2 * lanes.size());
        lanes.push_back(std::make_unique<Lane>(
            StreamInputOptions{named.path, named.format, options.frameRate, options.loop}, context,
            asio::ip::udp::endpoint(target.address(), port)));
    }
    std::uint64_t late = 0;
    bool isDescribed = false;
    for (bool again = true; again;) {
        Sending sending(options, lanes, target.port(), target.address().to_string(), log);
        sending.run();
        late += sending.late();
        isDescribed = sending.isDescribed();
        again = sending.needsRestart() && !platform::wasInterrupted();
        if (again) log.Log(1, "the streams begin anew");
    }
    std::uint64_t packets = 0;
    std::uint64_t refused = 0;
    for (const auto& lane : lanes) {
        tellSkipped(lane->input.skipped(), &log);
        tellPerson(fmt::format("{}: {} packets, {} bytes, {} reports\n",
                               platform::utf8From(lane->input.path()), lane->media.packets(),
                               lane->media.bytes(), lane->reports.packets()));
        packets += lane->media.packets();
        refused += lane->media.refused();
    }
    if (refused > 0) tellPerson(fmt::format("datagrams that the system did not send: {}\n", refused));
    tellPerson(fmt::format("late packets: {}\n", late));
    if (packets == 0 && !platform::wasInterrupted())
        throw std::runtime_error("no packet came out of any file");
    if (!isDescribed && !platform::wasInterrupted())
        throw std::runtime_error(
            "the session description did not become complete: a stream lacks what it takes");
}

}  // namespace

void addStreamCommand(CLI::App& app) {
    const auto options = std::make_shared<StreamOptions>();
    CLI::App* command =
        app.add_subcommand("stream", "Send elementary streams as RTP, paced and with sender reports");
    command->add_option("IN", options->inputs, "Elementary streams, as FILE or FILE:FORMAT")->required();
    command->add_option("--to", options->to, "Where the first stream goes; each further one two ports above")
        ->type_name("ADDR:PORT")
        ->required();
    addPath(*command, "--sdp", options->sdp,
            "Write the session description to FILE as soon as it is complete")
        ->type_name("FILE")
        ->required();
    command->add_option("--cname", options->cname, "CNAME of the sender reports")
        ->type_name("NAME")
        ->capture_default_str();
    addFrameRateOption(*command, options->frameRate);
    addParameterSetOption(*command, options->parameterSets);
    command->add_flag("--loop", options->loop, "Begin each file anew when it ends");
    addLogOptions(*command, options->log);
    command->footer(formatList(true) +
                    "Examples:\n"
                    "  mvrtpfec stream movie.264 sound.aac --to 239.1.2.3:5004 --sdp movie.sdp --loop\n"
                    "  mvrtpfec stream dump.bin:aac-latm --to 127.0.0.1:5004 --sdp sound.sdp");
    command->callback([options] {
        RunFiles files{{}, {options->sdp}};
        for (const auto& text : options->inputs) files.read.push_back(parseStreamName(text).path);
        runLogged(options->log, "stream to " + options->to, files,
                  [&](auto& log) { runStream(*options, log); });
    });
}

}  // namespace mvrtpfec
