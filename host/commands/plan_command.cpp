#include <memory>
#include <string>

#include <fmt/format.h>

#include "host/commands/channel_options.h"
#include "host/commands/commands.h"
#include "host/commands/network_options.h"
#include "host/commands/options.h"
#include "host/commands/report.h"
#include "host/plan/matrix_plan.h"

namespace mvrtpfec {

namespace {

struct PlanOptions {
    PlanRequest request;
    std::optional<double> mostOverhead;  ///< percent
    std::size_t lines = 10;
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

void runPlan(const PlanOptions& options) {
    requireChannel(options.request.channel);
    PlanRequest request = options.request;
    if (options.mostOverhead) request.mostOverhead = *options.mostOverhead / 100;
    if (request.mostLatency && !request.bitRate) throw UsageError("--max-latency needs --bitrate");
    const auto entries = planMatrices(request);
    if (entries.empty()) throw std::runtime_error("no matrix is within the limits");
    nlohmann::ordered_json json{{"packets", request.packets},
                                {"loss", request.channel.loss},
                                {"burst", request.channel.burst},
                                {"seed", request.channel.seed}};
    for (const PlanEntry& entry : entries) json["matrices"].push_back(toJson(entry));
    std::string text = fmt::format("{:6} {:7}  {:>7}  {:>20}  {:>5}  {}", "mode", " L x D", "added",
                                   "one / two matrices", "burst", "still lost");
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
    command->add_option("--lines", options->lines, "Matrices to show")->capture_default_str()->type_name("N");
    addJsonOption(*command, options->json);
    command->footer(
        "What is still lost comes from sending 20,000 packets of each matrix through a channel of that "
        "loss.\n"
        "Examples:\n"
        "  mvrtpfec plan --bitrate 8M --loss 0.02 --burst 3 --max-latency 400 --max-overhead 25");
    command->callback([command, options] {
        if (command->count("--fec-loss") == 0)
            options->request.channel.fecLoss = options->request.channel.loss;
        runPlan(*options);
    });
}

}  // namespace mvrtpfec
