#include <filesystem>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "host/commands/commands.h"
#include "host/commands/interruption.h"
#include "host/commands/options.h"
#include "host/commands/progress_bar.h"
#include "host/commands/report.h"
#include "host/graph/filter_graph.h"
#include "host/interop/fec_intake.h"
#include "host/io/packet_source.h"
#include "host/log/program_log.h"
#include "host/stages/repair_chain.h"
#include "host/stages/repaired_output.h"
#include "platform/files/utf8_path.h"

namespace mvrtpfec {

namespace {

struct RepairOptions {
    std::filesystem::path in;
    std::filesystem::path out;
    std::filesystem::path json;
    std::filesystem::path module;
    std::uint16_t port = defaultMediaPort;
    GuardOptions guard{.isOn = false, .settings = {}};
    std::optional<FecFormat> fecFormat = FecFormat::native;  ///< nothing: by what comes
    LogOptions log;
};

/// Delivered packets bear the time of the packet that set them free, as a receiver would send them.
RepairFigures repairStream(PacketSource& source, RepairedOutput& output, const RepairOptions& options,
                           mvn::log::ILogPerf& log) {
    FilterGraph graph(options.module);
    RepairChain chain(graph, options.guard.chosen(), log,
                      [&](ConstRtpPacketView packet, const Moment& moment) { output.write(packet, moment); });
    graph.run();

    FecIntake intake(options.fecFormat, log);
    ProgressBar progress;
    Datagram in;
    Moment moment;
    while (source.read(in)) {
        throwIfInterrupted();
        progress.update([&] { return source.progress(); });
        moment.time = in.time;
        moment.addressing = *source.addressing();
        if (intake.take(in.payload)) chain.push(in.port, in.payload, moment);
    }
    chain.finish();
    const RepairFigures figures = chain.figures();
    requireMedia(figures.delivered, source, options.in, options.port);
    output.finish();
    return figures;
}

void runRepair(const RepairOptions& options, mvn::log::ILogPerf& log) {
    formatOf(options.in);
    formatOf(options.out);
    const auto source = openSource(options.in, options.port);
    RepairedOutput output(options.out, options.port, *source);
    const RepairFigures figures = repairStream(*source, output, options, log);
    tellBreak(*source, options.in, &log);
    tellSkipped(source->skipped(), &log);
    logFigures(log, figures);

    Table table;
    addRows(table, figures);
    addSourceRows(table, *source);
    publish(fmt::format("{} -> {}", platform::utf8From(options.in), platform::utf8From(options.out)), table,
            "", toJson(figures), options.json);
}

}  // namespace

void addRepairCommand(CLI::App& app) {
    const auto options = std::make_shared<RepairOptions>();
    CLI::App* command =
        app.add_subcommand("repair", "Rebuild lost media packets of a capture from its FEC packets");
    addPath(*command, "IN", options->in, "Capture of media and FEC: .pcap or .pcapng")->required();
    addPath(*command, "OUT", options->out, "Repaired media to write: .ts, .pcap or .pcapng")->required();
    addPortOption(*command, options->port);
    addGuardOptions(*command, options->guard);
    addFecIntakeOption(*command, options->fecFormat);
    addJsonOption(*command, options->json);
    addModuleOption(*command, options->module);
    addLogOptions(*command, options->log, {rtpFecInPool});
    command->footer(
        "Examples:\n"
        "  mvrtpfec repair feed-fec.pcap repaired.ts --guard on\n"
        "  mvrtpfec repair feed-fec.pcapng repaired.pcapng --port 6000 --json -");
    command->callback([options] {
        runLogged(options->log, "repair of " + platform::utf8From(options->in),
                  {{options->in, options->module}, {options->out, options->json}},
                  [&](auto& log) { runRepair(*options, log); });
    });
}

}  // namespace mvrtpfec
