#include <algorithm>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "host/commands/channel_options.h"
#include "host/commands/commands.h"
#include "host/commands/network_options.h"
#include "host/commands/options.h"
#include "host/commands/report.h"
#include "host/io/packet_source.h"
#include "host/io/run_files.h"
#include "host/plan/loss_trace.h"
#include "host/plan/matrix_plan.h"
#include "host/usage_error.h"

namespace mvrtpfec {

namespace {

struct PlanOptions {
    PlanRequest request;
    std::optional<double> mostOverhead;  ///< percent
    std::size_t lines = 10;
    std::filesystem::path trace;
    std::uint16_t port = defaultMediaPort;
    std::filesystem::path json;
};

const char* modeName(const MatrixConfig& matrix) {
    return matrix.mode == fecRow ? "row" : matrix.mode == fecColumn ? "column" : "both";
}

std::string line(const PlanEntry& entry) {
    const std::string latency =
        entry.latency
            ? fmt::format("{:6.0f} / {:.0f} ms", *entry.latency, 2 * *entry.latency)
            : fmt::format("{:4} / {} packets", entry.cost.delayPackets, 2 * entry.cost.delayPackets);
    return fmt::format("{:6} {:2} x {:<2}  {:5.1f} %  {:>20}  {:5}  {:.5f} %  {}", modeName(entry.matrix),
                       entry.matrix.columns, entry.matrix.rows, entry.cost.overhead * 100, latency,
                       entry.cost.longestBurst, entry.trial.residualLoss() * 100, entry.preset);
}

nlohmann::ordered_json toJson(const PlanEntry& entry) {
    nlohmann::ordered_json json{{"mode", modeName(entry.matrix)},
                                {"columns", entry.matrix.columns},
                                {"rows", entry.matrix.rows},
                                {"overhead_percent", entry.cost.overhead * 100},
                                {"delay_packets", entry.cost.delayPackets},
                                {"longest_burst_packets", entry.cost.longestBurst},
                                {"residual_loss", entry.trial.residualLoss()},
                                {"preset", entry.preset}};
    if (entry.latency) json["latency_ms"] = *entry.latency;
    return json;
}

/// A long trace is cut, a short one met again and again.
constexpr std::size_t mostTraced = 100'000;

LossTrace loadTrace(const PlanOptions& options) {
    if (formatOf(options.trace) == FileFormat::transportStream)
        throw UsageError("a trace is a .pcap or .pcapng file");
    const auto source = openSource(options.trace, options.port);
    LossTrace trace = readLossTrace(*source);
    requireMedia(trace.lost.size(), *source, options.trace, options.port);
    tellBreak(*source, options.trace);
    return trace;
}

nlohmann::ordered_json toJson(const PlanRequest& request) {
    nlohmann::ordered_json json{{"packets", request.packets}};
    if (request.trace)
        json.update({{"trace_packets", request.trace->lost.size()},
                     {"loss", request.trace->loss()},
                     {"burst", request.trace->meanBurst()},
                     {"longest_burst_packets", request.trace->longestBurst()}});
    else
        json.update({{"loss", request.channel.loss},
                     {"burst", request.channel.burst},
                     {"seed", request.channel.seed}});
    return json;
}

std::string header(const PlanRequest& request) {
    std::string text;
    if (const auto& trace = request.trace)
        text = fmt::format("of {} packets {} were lost, in bursts of {:.1f} on average, {} at most\n",
                           trace->lost.size(), trace->losses(), trace->meanBurst(), trace->longestBurst());
    return text + fmt::format("{:6} {:7}  {:>7}  {:>20}  {:>5}  {}", "mode", " L x D", "added",
                              "one / two matrices", "burst", "still lost");
}

/// What is asked for, with what the trace tells.
PlanRequest requestOf(const PlanOptions& options) {
    PlanRequest request = options.request;
    if (options.mostOverhead) request.mostOverhead = *options.mostOverhead / 100;
    if (!options.trace.empty()) {
        request.trace = loadTrace(options);
        request.packets = std::clamp<std::uint64_t>(request.trace->lost.size(), request.packets, mostTraced);
        if (!request.bitRate) request.bitRate = request.trace->bitRate;
    }
    if (request.mostLatency && !request.bitRate) throw UsageError("--max-latency needs --bitrate");
    return request;
}

void runPlan(const PlanOptions& options) {
    requireChannel(options.request.channel);
    const PlanRequest request = requestOf(options);
    const auto entries = planMatrices(request);
    if (entries.empty()) throw std::runtime_error("no matrix is within the limits");
    nlohmann::ordered_json json = toJson(request);
    for (const PlanEntry& entry : entries) json["matrices"].push_back(toJson(entry));
    std::string text = header(request);
    for (std::size_t i = 0; i < entries.size() && i < options.lines; ++i) text += "\n" + line(entries[i]);
    publish(text, {}, "", json, options.json);
}

}  // namespace

void addPlanCommand(CLI::App& app) {
    const auto options = std::make_shared<PlanOptions>();
    CLI::App* command = app.add_subcommand("plan", "Find the matrix for a stream and its losses");
    addBitRateOption(*command, options->request.bitRate);
    addChannelOptions(*command, options->request.channel);
    command
        ->add_option("--max-latency", options->request.mostLatency, "Milliseconds that two matrices may last")
        ->check(CLI::Range(1.0, 1e6))
        ->type_name("MS");
    command
        ->add_option("--max-overhead", options->mostOverhead,
                     "FEC packets for a hundred media packets at most")
        ->check(CLI::Range(1.0, 100.0))
        ->type_name("PCT");
    command->add_option("--lines", options->lines, "Matrices to show")
        ->check(CLI::Range(std::size_t{1}, std::size_t{1000}))
        ->capture_default_str()
        ->type_name("N");
    addPath(*command, "--trace", options->trace,
            "Capture of a stream: what it lost, instead of a channel with --loss and --burst")
        ->excludes("--loss")
        ->excludes("--burst")
        ->type_name("FILE");
    addPortOption(*command, options->port);
    addJsonOption(*command, options->json);
    command->footer(
        "What is still lost comes from sending 20,000 packets of each matrix, or up to 100,000 where there "
        "is a "
        "trace, through a channel of that loss.\n"
        "Examples:\n"
        "  mvrtpfec plan --bitrate 8M --loss 0.02 --burst 3 --max-latency 400 --max-overhead 25\n"
        "  mvrtpfec plan --trace received.pcap --max-overhead 25");
    command->callback([command, options] {
        if (command->count("--fec-loss") == 0)
            options->request.channel.fecLoss = options->request.channel.loss;
        requireDistinct({{options->trace}, {options->json}});
        runPlan(*options);
    });
}

}  // namespace mvrtpfec
