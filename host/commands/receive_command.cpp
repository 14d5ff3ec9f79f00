#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "host/commands/commands.h"
#include "host/commands/network_options.h"
#include "host/commands/options.h"
#include "host/commands/report.h"
#include "host/graph/filter_graph.h"
#include "host/interop/fec_intake.h"
#include "host/live/media_output.h"
#include "host/live/reception_log.h"
#include "host/live/reception_meter.h"
#include "host/live/reception_metrics.h"
#include "host/live/reception_report.h"
#include "host/live/stream_readers.h"
#include "host/log/program_log.h"
#include "host/net/endpoint.h"
#include "host/net/own_address.h"
#include "host/stages/repair_chain.h"
#include "host/usage_error.h"
#include "platform/files/utf8_path.h"
#include "platform/process/signals.h"

namespace mvrtpfec {

namespace {

using namespace std::chrono_literals;

struct ReceiveOptions {
    std::string from;
    std::string output;
    ReceivingOptions receiving;
    SendingOptions sending;
    GuardOptions guard;
    std::optional<FecFormat> fecFormat;  ///< else by what comes
    double interval = 1;                 ///< s
    std::filesystem::path json;
    std::string metrics;  ///< where they are served; empty for nowhere
    std::filesystem::path module;
    LogOptions log;
};

/// From the network through the guard and the receiver filter to the output.
class Receiving {
public:
    Receiving(const ReceiveOptions& options, mvn::log::ILogPerf& log)
        : options_(options),
          log_(log),
          output_(openMediaOutput(options.output, options.sending)),
          graph_(options.module),
          chain_(graph_, options.guard.chosen(), log,
                 [this](ConstRtpPacketView packet, const Moment&) { deliver(packet); }),
          readers_(parseStream(options.from), options.receiving,
                   [this](StreamPort port, auto packet) { arrive(port, std::move(packet)); }),
          report_(options.json),
          intake_(options.fecFormat, log) {
        if (!options.metrics.empty())
            metrics_ = std::make_unique<ReceptionMetrics>(parseEndpoint(options.metrics));
        graph_.run();
    }

    void run() {
        const auto interval = std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::duration<double>(options_.interval));
        auto next = std::chrono::steady_clock::now() + interval;
        auto nextLook = std::chrono::steady_clock::now() + lookInterval;
        while (!platform::wasInterrupted()) {
            readers_.runFor(turn_);
            chain_.passTime(std::chrono::steady_clock::now());
            const auto now = std::chrono::steady_clock::now();
            if (now >= nextLook) {
                nextLook = now + lookInterval;
                look();
            }
            if (now < next) continue;
            // After a standstill of the machine once, not for every interval of it.
            next = std::max(next, now - interval) + interval;
            tell();
        }
        // What an FEC packet named may wait in the other socket.
        chain_.breakOff();
        readers_.runFor(20ms);
        const std::chrono::nanoseconds latency = meter_.takeLatency();
        chain_.finish();
        output_->finish();
        // What was pushed out at the end had to wait for it.
        meter_.takeLatency();
        look();
        report_.end(totals(), latency);
    }

    bool hasWholeReport() const { return report_.isWhole(); }

    ReceptionTotals totals() {
        return {.reception = meter_.figures(),
                .repair = chain_.figures(),
                .tooLong = readers_.tooLong(),
                .refused = output_->refused(),
                .notTurned = intake_.leftOut(),
                .overrun = readers_.overrun()};
    }

private:
    /// The log and the metrics don't wait for the next line of figures.
    static constexpr auto lookInterval = 1s;

    void look() {
        const ReceptionTotals now = totals();
        log_.note(now, std::chrono::steady_clock::now());
        if (metrics_) metrics_->publish(now, latency_);
    }

    void tell() {
        latency_ = meter_.takeLatency();
        report_.interval(totals(), latency_);
    }

    void arrive(StreamPort port, std::unique_ptr<RtpPacket> packet) {
        const auto now = std::chrono::steady_clock::now();
        if (meter_.arrive(packet->view, now) && intake_.take(packet->view))
            chain_.push(port, std::move(packet), moment_);
    }

    void deliver(ConstRtpPacketView packet) {
        meter_.deliver(packet, std::chrono::steady_clock::now());
        output_->write(packet);
    }

    const ReceiveOptions& options_;
    /// Between two looks at the clock; short where a missing packet is waited for by the clock.
    const std::chrono::milliseconds turn_ = options_.guard.settings.patience ? 5ms : 50ms;
    ReceptionLog log_;
    std::unique_ptr<MediaOutput> output_;
    ReceptionMeter meter_;
    std::chrono::nanoseconds latency_{0};  ///< of the last interval
    Moment moment_;                        ///< live packets go out when they are free
    FilterGraph graph_;
    RepairChain chain_;
    StreamReaders readers_;
    ReceptionReport report_;
    FecIntake intake_;
    std::unique_ptr<ReceptionMetrics> metrics_;
};

/// Whether every packet came out.
bool runReceive(const ReceiveOptions& options, mvn::log::ILogPerf& log) {
    platform::ignoreHangUp();
    if (options.output == "-" && options.json == "-")
        throw UsageError("standard output can't be for the stream and for JSON");
    if (const auto target = parseNetworkName(options.output))
        requireElsewhere({&*target, 1}, parseStream(options.from));
    const auto receiving = std::make_unique<Receiving>(options, log);
    receiving->run();
    const ReceptionTotals totals = receiving->totals();
    logFigures(log, totals.repair);
    if (!receiving->hasWholeReport()) throw std::runtime_error("not all JSON lines could be written");
    if (const auto text = noMediaText(totals)) throw std::runtime_error(*text);
    return totals.repair.stream.lostForGood == 0;
}

}  // namespace

void addReceiveCommand(CLI::App& app) {
    const auto options = std::make_shared<ReceiveOptions>();
    CLI::App* command = app.add_subcommand("receive", "Receive a protected transport stream and repair it");
    command
        ->add_option("--from", options->from,
                     "Where the media come to; FECA two ports above, FECB four, or as said")
        ->type_name("ADDR:PORT[,FECA,FECB]")
        ->required();
    command->add_option("OUTPUT", options->output, "A .ts file, -, udp://ADDR:PORT, rtp://ADDR:PORT or null")
        ->required();
    addReceivingOptions(*command, options->receiving);
    addOnwardOptions(*command, options->sending);
    addGuardOptions(*command, options->guard);
    command
        ->add_option_function<double>(
            "--guard-hold",
            [options](double ms) {
                options->guard.settings.patience = std::chrono::microseconds(std::llround(ms * 1000));
            },
            "Milliseconds that the guard waits for a missing packet at most [until the window has passed]")
        ->check(CLI::Range(1.0, 60'000.0))
        ->type_name("MS");
    addFecIntakeOption(*command, options->fecFormat);
    command
        ->add_option("--stats", options->interval, "Time between two lines of figures, as 1s or 500ms [1s]")
        ->transform(CLI::AsNumberWithUnit(std::map<std::string, double>{{"s", 1}, {"ms", 1e-3}}) &
                    CLI::Range(0.1, 3600.0))
        ->type_name("TIME");
    addPath(*command, "--json", options->json,
            "Write a line of JSON each time to FILE, or - for standard output")
        ->type_name("FILE|-");
    command
        ->add_option("--metrics", options->metrics,
                     "Serve the figures to Prometheus, at http://ADDR:PORT/metrics")
        ->type_name("ADDR:PORT");
    addModuleOption(*command, options->module);
    addLogOptions(*command, options->log, {rtpFecInPool});
    command->footer(
        "It ends with status 3 when packets were lost for good, 1 when no media came but something else "
        "did.\n"
        "Examples:\n"
        "  mvrtpfec receive --from 239.1.2.3:5004 udp://127.0.0.1:6000\n"
        "  mvrtpfec receive --from 0.0.0.0:5004 feed.ts --json figures.jsonl");
    command->callback([options] {
        const RunFiles files{{options->module}, {platform::pathFromUtf8(options->output), options->json}};
        runLogged(options->log, "receiving from " + options->from, files, [&](auto& log) {
            if (!runReceive(*options, log)) throw LossError("packets were lost for good");
        });
    });
}

}  // namespace mvrtpfec
