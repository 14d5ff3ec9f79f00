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
#include "host/io/ts_bit_rate.h"
#include "host/plan/loss_trace.h"
#include "host/plan/matrix_plan.h"
#include "host/usage_error.h"

namespace mvrtpfec {

namespace {

struct PlanOptions {
    PlanRequest request;
    std::optional<double> mostOverhead;  ///< percent
    std::size_t lines = 10;
    std::filesystem::path input;
    std::filesystem::path trace;
    std::string target;
    std::uint16_t port = defaultMediaPort;
    std::filesystem::path json;
};

const char* modeName(const MatrixConfig& matrix) {
    return matrix.mode == fecRow ? "row" : matrix.mode == fecColumn ? "column" : "both";
}

std::string nameOf(const MatrixConfig& matrix) {
    return fmt::format("{} {} x {}", modeName(matrix), matrix.columns, matrix.rows);
}

/// What lies between two faults on average, when so many come in a packet.
std::string betweenFaults(double faultRate, std::optional<std::uint64_t> bitRate) {
    return bitRate ? spanText(1 / faultRate / packetRateOf(*bitRate))
                   : fmt::format("{:.3g} packets", 1 / faultRate);
}

std::string faultsText(const TrialFigures& trial, std::optional<std::uint64_t> bitRate) {
    const std::string bound = "over " + betweenFaults(trial.faultRateBound(), bitRate);
    return trial.faultRate() == 0 ? bound : betweenFaults(trial.faultRate(), bitRate) + ", " + bound;
}

std::string lossText(const TrialFigures& trial) {
    const auto percent = [](double share) {
        return share >= 1e-5 ? fmt::format("{:.4f}", share * 100) : fmt::format("{:.1e}", share * 100);
    };
    const std::string bound = "under " + percent(trial.residualLossBound()) + " %";
    return trial.residualLoss() == 0 ? bound : percent(trial.residualLoss()) + ", " + bound;
}

std::string line(const PlanEntry& entry, const PlanRequest& request) {
    const std::string latency =
        entry.latency
            ? fmt::format("{:6.0f} / {:.0f} ms", *entry.latency, 2 * *entry.latency)
            : fmt::format("{:4} / {} packets", entry.cost.delayPackets, 2 * entry.cost.delayPackets);
    return fmt::format("{:6} {:2} x {:<2}  {:5.1f} %  {:>20}  {:5}  {:>24}  {:>26}  {}",
                       modeName(entry.matrix), entry.matrix.columns, entry.matrix.rows,
                       entry.cost.overhead * 100, latency, entry.cost.longestBurst, lossText(entry.trial),
                       faultsText(entry.trial, request.bitRate), entry.preset);
}

/// A mean that is not known yet is left out; its bound is there in any case.
void addBetweenFaults(nlohmann::ordered_json& json, const TrialFigures& trial,
                      std::optional<std::uint64_t> bitRate) {
    const auto add = [&](const std::string& name, double rate) {
        json["packets_between_faults" + name] = 1 / rate;
        if (bitRate) json["seconds_between_faults" + name] = 1 / rate / packetRateOf(*bitRate);
    };
    if (trial.faultRate() > 0) add("", trial.faultRate());
    add("_bound", trial.faultRateBound());
}

nlohmann::ordered_json toJson(const PlanEntry& entry, const PlanRequest& request) {
    nlohmann::ordered_json json{{"mode", modeName(entry.matrix)},
                                {"columns", entry.matrix.columns},
                                {"rows", entry.matrix.rows},
                                {"overhead_percent", entry.cost.overhead * 100},
                                {"delay_packets", entry.cost.delayPackets},
                                {"longest_burst_packets", entry.cost.longestBurst},
                                {"packets", entry.trial.sent},
                                {"residual_loss", entry.trial.residualLoss()},
                                {"residual_loss_bound", entry.trial.residualLossBound()},
                                {"faults", entry.trial.lost.faults().count()},
                                {"preset", entry.preset}};
    addBetweenFaults(json, entry.trial, request.bitRate);
    if (entry.latency) json["latency_ms"] = *entry.latency;
    if (request.target) json["holds_target"] = entry.holdsTarget;
    return json;
}

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
    nlohmann::ordered_json json{{"packets", usualPackets(request)},
                                {"bound_certainty_percent", 95},
                                {"fault_packets", ResidualLosses::packetsOfFault}};
    if (request.bitRate) json["bits_per_second"] = *request.bitRate;
    if (request.target)
        json["target_packets_between_faults"] = request.target->packetsForFault(request.bitRate);
    if (request.trace)
        json.update({{"trace_packets", request.trace->lost.size()},
                     {"loss", request.trace->loss()},
                     {"burst", request.trace->meanBurst()},
                     {"longest_burst_packets", request.trace->longestBurst()},
                     {"outages", request.trace->outages}});
    else
        json.update({{"loss", request.channel.loss},
                     {"burst", request.channel.burst},
                     {"seed", request.channel.seed}});
    return json;
}

std::string header(const PlanRequest& request) {
    std::string text;
    if (const auto& trace = request.trace)
        text = fmt::format(
            "of {} packets {} were lost, in bursts of {:.1f} on average, {} at most; {} outages\n",
            trace->lost.size(), trace->losses(), trace->meanBurst(), trace->longestBurst(), trace->outages);
    return text + fmt::format("{:6} {:7}  {:>7}  {:>20}  {:>5}  {:>24}  {:>26}", "mode", " L x D", "added",
                              "one / two matrices", "burst", "still lost", "a fault every");
}

FaultTarget targetOf(const std::string& text) {
    try {
        return parseFaultTarget(text);
    } catch (const std::invalid_argument& error) {
        throw UsageError(std::string("--target: ") + error.what());
    }
}

std::uint64_t bitRateOf(const std::filesystem::path& input) {
    if (formatOf(input) != FileFormat::transportStream)
        throw UsageError("a bit rate is taken from a .ts file; --trace takes captures");
    return readTsBitRate(input);
}

void requireBitRate(const PlanRequest& request) {
    if (request.bitRate) return;
    const char* const sources = " needs --bitrate, a .ts file or a --trace";
    if (request.mostLatency) throw UsageError(std::string("--max-latency") + sources);
    if (request.target && !request.target->isInPackets) throw UsageError(std::string("--target") + sources);
}

/// What is asked for, with what the files tell.
PlanRequest requestOf(const PlanOptions& options) {
    PlanRequest request = options.request;
    if (options.mostOverhead) request.mostOverhead = *options.mostOverhead / 100;
    if (!options.target.empty()) request.target = targetOf(options.target);
    if (!options.input.empty() && !request.bitRate) request.bitRate = bitRateOf(options.input);
    if (!options.trace.empty()) {
        request.trace = loadTrace(options);
        if (!request.bitRate) request.bitRate = request.trace->bitRate;
    }
    requireBitRate(request);
    return request;
}

/// What became of the target.
std::string verdict(const std::vector<PlanEntry>& entries, const PlanRequest& request,
                    const std::string& target) {
    const auto bound = [](const PlanEntry& entry) { return entry.trial.faultRateBound(); };
    const bool isHeld = entries.front().holdsTarget;
    const PlanEntry& best = isHeld ? entries.front() : *std::ranges::min_element(entries, {}, bound);
    const std::string reached = fmt::format("a fault in over {} with {} packets (95 %)",
                                            betweenFaults(bound(best), request.bitRate), best.trial.sent);
    if (isHeld)
        return fmt::format("{} is the leanest that holds {}: {}", nameOf(best.matrix), target, reached);
    return fmt::format("no matrix is sure to hold {}: {} reached {}", target, nameOf(best.matrix), reached);
}

void runPlan(const PlanOptions& options) {
    requireChannel(options.request.channel);
    const PlanRequest request = requestOf(options);
    const auto entries = planMatrices(request);
    if (entries.empty()) throw std::runtime_error("no matrix is within the limits");
    nlohmann::ordered_json json = toJson(request);
    for (const PlanEntry& entry : entries) json["matrices"].push_back(toJson(entry, request));
    std::string text = header(request);
    for (std::size_t i = 0; i < entries.size() && i < options.lines; ++i)
        text += "\n" + line(entries[i], request);
    const std::string found = request.target ? verdict(entries, request, options.target) : "";
    const bool isMissed = request.target && !entries.front().holdsTarget;
    publish(text, {}, isMissed ? "" : found, json, options.json);
    if (isMissed) throw std::runtime_error(found);
}

}  // namespace

void addPlanCommand(CLI::App& app) {
    const auto options = std::make_shared<PlanOptions>();
    CLI::App* command = app.add_subcommand("plan", "Find the matrix for a stream and its losses");
    addPath(*command, "INPUT", options->input, "Transport stream (.ts) whose clock tells the bit rate");
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
    command
        ->add_option("--target", options->target,
                     "The leanest matrix that holds it: \"one fault in 4h\", with s, min, h, d or packets")
        ->type_name("TEXT");
    command
        ->add_option("--packets", options->request.packets,
                     "Media packets to send through each matrix [as many as tell]")
        ->check(CLI::Range(std::uint64_t{1000}, std::uint64_t{10'000'000'000}))
        ->type_name("N");
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
        "What is still lost comes from a million packets of each matrix in a channel of that loss, 20,000 "
        "with "
        "--reorder or --duplicate, or those of the trace. Behind \"under\" and \"over\" stand bounds that "
        "hold "
        "with 95 % certainty; the matrices are ordered by that of the loss. A fault is all that stays lost "
        "within "
        "100 packets.\n"
        "With --target as many packets are sent as tell whether it is held, ten times its span; where none "
        "holds "
        "it the status is 1.\n"
        "Examples:\n"
        "  mvrtpfec plan --bitrate 8M --loss 0.02 --burst 3 --max-latency 400 --max-overhead 25\n"
        "  mvrtpfec plan movie.ts --loss 0.001 --target \"one fault in 4h\"\n"
        "  mvrtpfec plan --trace received.pcap --max-overhead 25");
    command->callback([command, options] {
        if (command->count("--fec-loss") == 0)
            options->request.channel.fecLoss = options->request.channel.loss;
        requireDistinct({{options->trace}, {options->json}});
        runPlan(*options);
    });
}

}  // namespace mvrtpfec
