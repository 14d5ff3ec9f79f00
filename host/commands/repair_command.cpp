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
#include "host/interop/fec_watch.h"
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
    GuardOptions guard;
    std::optional<FecFormat> fecFormat;  ///< else by what comes
    LogOptions log;
};

struct RepairReport {
    RepairFigures repair;
    FecFigures fec;
    std::uint64_t notTurned = 0;  ///< FEC packets of the other format, left out
    std::uint64_t notFec = 0;     ///< packets of its payload type that are something else
};

/// Delivered packets bear the time of the packet that set them free, as a receiver would send them.
RepairReport repairStream(PacketSource& source, RepairedOutput& output, const RepairOptions& options,
                          mvn::log::ILogPerf& log) {
    FilterGraph graph(options.module);
    RepairChain chain(graph, options.guard.chosen(), log,
                      [&](ConstRtpPacketView packet, const Moment& moment) { output.write(packet, moment); });
    graph.run();

    FecIntake intake(options.fecFormat, log);
    FecWatch watch;
    RepairReport report;
    ProgressBar progress;
    Datagram in;
    Moment moment;
    while (source.read(in)) {
        throwIfInterrupted();
        progress.update([&] { return source.progress(); });
        moment.time = in.time;
        moment.addressing = *source.addressing();
        const ConstRtpPacketView packet = viewOf(in.payload);
        if (packet.isValid() && packet.payloadType() == fecPayloadType && !watch.note(packet))
            ++report.notFec;
        else if (intake.take(in.payload))
            chain.push(in.port, in.payload, moment);
    }
    chain.finish();
    report.repair = chain.figures();
    report.fec = watch.figures();
    report.notTurned = intake.leftOut();
    requireMedia(report.repair.delivered, source, options.in, options.port);
    output.finish();
    return report;
}

void runRepair(const RepairOptions& options, mvn::log::ILogPerf& log) {
    formatOf(options.in);
    formatOf(options.out);
    const auto source = openSource(options.in, options.port);
    RepairedOutput output(options.out, options.port, *source);
    const RepairReport report = repairStream(*source, output, options, log);
    tellBreak(*source, options.in, &log);
    tellSkipped(source->skipped(), &log);
    logFigures(log, report.repair);

    Table table;
    addRows(table, report.fec);
    addRows(table, report.repair);
    if (report.notTurned > 0) table.emplace_back("FEC not turned", std::to_string(report.notTurned));
    if (report.notFec > 0) table.emplace_back("no FEC, left out", std::to_string(report.notFec));
    addSourceRows(table, *source);
    auto json = toJson(report.repair);
    json.update(toJson(report.fec));
    json.update({{"fec_not_turned_packets", report.notTurned}, {"not_fec_packets", report.notFec}});
    publish(fmt::format("{} -> {}", platform::utf8From(options.in), platform::utf8From(options.out)), table,
            "", json, options.json);
    requireWhole(report.repair);
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
        "It ends with status 3 when packets were lost for good.\n"
        "Examples:\n"
        "  mvrtpfec repair feed-fec.pcap repaired.ts\n"
        "  mvrtpfec repair feed-fec.pcapng repaired.pcapng --port 6000 --json -");
    command->callback([options] {
        runLogged(options->log, "repair of " + platform::utf8From(options->in),
                  {{options->in, options->module}, {options->out, options->json}},
                  [&](auto& log) { runRepair(*options, log); });
    });
}

}  // namespace mvrtpfec
