#include <filesystem>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "host/commands/channel_options.h"
#include "host/commands/commands.h"
#include "host/commands/interruption.h"
#include "host/commands/options.h"
#include "host/commands/progress_bar.h"
#include "host/commands/report.h"
#include "host/commands/sample_file.h"
#include "host/graph/channel.h"
#include "host/graph/filter_graph.h"
#include "host/graph/lossy_sender_branch.h"
#include "host/io/packet_source.h"
#include "host/log/program_log.h"
#include "host/stages/repair_chain.h"
#include "host/stages/repaired_output.h"
#include "host/stages/sent_history.h"
#include "platform/files/utf8_path.h"

namespace mvrtpfec {

namespace {

struct SimulateOptions {
    std::filesystem::path in;
    std::filesystem::path output;
    std::filesystem::path json;
    MatrixConfig matrix;
    ChannelConfig channel;
    std::filesystem::path module;
    std::uint16_t port = defaultMediaPort;
    GuardOptions guard;
    LogOptions log;
};

struct SimulateFigures {
    RepairFigures repair;
    std::uint64_t sent = 0;
    std::uint64_t droppedMedia = 0;
    std::uint64_t droppedFec = 0;
    std::uint64_t mismatched = 0;
    bool whole = false;
    std::uint64_t skippedBytes = 0;  ///< of a transport stream, which belong to no packet

    /// Of those sent; some may have been delivered twice.
    std::uint64_t missing() const { return repair.stream.lostForGood; }
};

/// Sender, channel and receiver in one graph; the output, if any, gets the repaired stream.
SimulateFigures simulateStream(PacketSource& source, RepairedOutput* output, const SimulateOptions& options,
                               mvn::log::ILogPerf& log) {
    SentHistory history;
    Moment moment;
    FilterGraph graph(options.module);
    RepairChain receiver(graph, options.guard.chosen(), log,
                         [&](ConstRtpPacketView packet, const Moment& freed) {
                             history.check(packet);
                             if (output != nullptr) output->write(packet, freed);
                         });
    LossySenderBranch sender(graph, options.matrix, options.channel,
                             [&](StreamPort port, ConstRtpPacketView packet) {
                                 receiver.push(port, {packet.data, packet.length}, moment);
                             });
    graph.run();

    ProgressBar progress;
    Datagram media;
    while (source.read(media)) {
        throwIfInterrupted();
        progress.update([&] { return source.progress(); });
        moment.addressing = *source.addressing();
        if (media.port != StreamPort::media || !viewOf(media.payload).isValid()) continue;
        history.add(viewOf(media.payload));
        receiver.expect(viewOf(media.payload));
        sender.push(viewOf(media.payload));
    }
    requireMedia(history.sent(), source, options.in, options.port);
    sender.finish();
    receiver.finish();
    if (output != nullptr) output->finish();
    const Channel& channel = sender.channel();
    return {receiver.figures(),   history.sent(),    channel.droppedMedia(),   channel.droppedFec(),
            history.mismatched(), history.isWhole(), totalOf(source.skipped())};
}

std::string verdict(const SimulateFigures& figures) {
    if (figures.whole) return "The repaired stream equals the source.";
    if (figures.mismatched > 0)
        return fmt::format("The repaired stream differs from the source: {} packets are wrong.",
                           figures.mismatched);
    if (figures.missing() > 0)
        return fmt::format("The repaired stream is not whole: {} of {} packets are missing.",
                           figures.missing(), figures.sent);
    return "The repaired stream differs from the source: packets came twice or out of order.";
}

void report(const SimulateOptions& options, const SimulateFigures& figures, PacketSource& source) {
    auto json = toJson(figures.repair);
    json.update({{"sent", figures.sent},
                 {"dropped_media", figures.droppedMedia},
                 {"dropped_fec", figures.droppedFec},
                 {"missing", figures.missing()},
                 {"mismatched", figures.mismatched},
                 {"whole", figures.whole},
                 {"skipped_bytes", figures.skippedBytes},
                 {"seed", options.channel.seed}});

    Table table{{"sent", std::to_string(figures.sent)},
                {"media dropped", std::to_string(figures.droppedMedia)},
                {"FEC dropped", std::to_string(figures.droppedFec)}};
    addRows(table, figures.repair);
    table.emplace_back("missing", std::to_string(figures.missing()));
    table.emplace_back("mismatched", std::to_string(figures.mismatched));
    addSourceRows(table, source);
    const std::string title =
        fmt::format("{} x {}, {:g} % loss, seed {}, guard {}", options.matrix.columns, options.matrix.rows,
                    options.channel.loss * 100, options.channel.seed, options.guard.isOn ? "on" : "off");
    publish(title, table, verdict(figures), json, options.json);
}

void runSimulate(const SimulateOptions& options, mvn::log::ILogPerf& log) {
    requireChannel(options.channel);
    formatOf(options.in);
    const auto source = openSource(options.in, options.port);
    std::unique_ptr<RepairedOutput> output;
    if (!options.output.empty()) {
        formatOf(options.output);
        output = std::make_unique<RepairedOutput>(options.output, options.port, *source);
    }
    const SimulateFigures figures = simulateStream(*source, output.get(), options, log);
    tellBreak(*source, options.in, &log);
    tellSkipped(source->skipped(), &log);
    logFigures(log, figures.repair);
    report(options, figures, *source);
    requireWhole(figures.repair);
    if (figures.mismatched > 0)
        throw LossError("packets were lost for good: wrong ones came out in their place");
}

}  // namespace

void addSimulateCommand(CLI::App& app) {
    const auto options = std::make_shared<SimulateOptions>();
    CLI::App* command = app.add_subcommand("simulate", "Send a stream through a lossy channel and repair it");
    addPath(*command, "IN", options->in, "Media: .ts, .pcap or .pcapng; left out: a sample of our own");
    addMatrixOptions(*command, options->matrix);
    addChannelOptions(*command, options->channel);
    addPortOption(*command, options->port);
    addGuardOptions(*command, options->guard);
    addPath(*command, "--output", options->output, "Write the repaired stream: .ts, .pcap or .pcapng")
        ->type_name("FILE");
    addJsonOption(*command, options->json);
    addModuleOption(*command, options->module);
    addLogOptions(*command, options->log, {rtpFecInPool});
    command->footer(
        "It ends with status 3 when packets were lost for good.\n"
        "Examples:\n"
        "  mvrtpfec simulate --mode both --columns 10 --rows 10 --loss 0.03\n"
        "  mvrtpfec simulate movie.ts --mode row --columns 8 --rows 4 --burst 5 --seed 7 --output out.ts");
    command->callback([command, options] {
        requireMatrix(*command, options->matrix);
        if (command->count("IN") == 0) options->in = findSample();
        if (command->count("--fec-loss") == 0) options->channel.fecLoss = options->channel.loss;
        runLogged(options->log, "simulation of " + platform::utf8From(options->in),
                  {{options->in, options->module}, {options->output, options->json}},
                  [&](auto& log) { runSimulate(*options, log); });
    });
}

}  // namespace mvrtpfec
