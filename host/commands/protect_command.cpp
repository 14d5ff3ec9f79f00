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
#include "host/io/packet_sink.h"
#include "host/io/packet_source.h"
#include "host/log/program_log.h"
#include "host/stages/protection.h"
#include "host/usage_error.h"
#include "platform/files/utf8_path.h"

namespace mvrtpfec {

namespace {

struct ProtectOptions {
    std::filesystem::path in;
    std::filesystem::path out;
    MatrixConfig matrix;
    FecFormat fecFormat = FecFormat::native;
    std::filesystem::path module;
    std::uint16_t port = defaultMediaPort;
    LogOptions log;
};

struct ProtectFigures {
    std::uint64_t media = 0;
    std::uint64_t fecA = 0;
    std::uint64_t fecB = 0;
    ProtectionFigures protection;
};

/// Copies the media and adds the FEC packets that each media packet completes behind it.
ProtectFigures protectStream(PacketSource& source, PacketSink& sink, const ProtectOptions& options) {
    ProtectFigures figures;
    Datagram media;
    Datagram fec;
    FilterGraph graph(options.module);
    Protection protection(graph, options.matrix, options.fecFormat, [&](StreamPort port, auto packet) {
        fec.payload.assign(packet.data, packet.data + packet.length);
        ++(port == StreamPort::fecA ? figures.fecA : figures.fecB);
        fec.port = port;
        fec.time = media.time;
        sink.write(fec);
    });
    graph.run();

    ProgressBar progress;
    while (source.read(media)) {
        throwIfInterrupted();
        progress.update([&] { return source.progress(); });
        if (media.port != StreamPort::media) continue;
        ++figures.media;
        sink.write(media);
        protection.push(std::make_unique<RtpPacket>(media.payload.data(), media.payload.size()));
    }
    requireMedia(figures.media, source, options.in, options.port);
    protection.finish();
    sink.finish();
    figures.protection = protection.figures();
    return figures;
}

void runProtect(const ProtectOptions& options, mvn::log::ILogger& log) {
    formatOf(options.in);
    if (formatOf(options.out) == FileFormat::transportStream)
        throw UsageError(platform::utf8From(options.out) +
                         ": a .ts file can't carry FEC packets; name a .pcap or .pcapng file");

    const auto source = openSource(options.in, options.port);
    const auto sink = openSink(options.out, options.port, source->addressing());
    const ProtectFigures figures = protectStream(*source, *sink, options);
    tellBreak(*source, options.in, &log);
    tellSkipped(source->skipped(), &log);

    Table table{{"media packets", std::to_string(figures.media)},
                {"FEC on FECA", std::to_string(figures.fecA)},
                {"FEC on FECB", std::to_string(figures.fecB)}};
    const auto addUnlessNone = [&](const char* name, std::uint64_t count) {
        if (count > 0) table.emplace_back(name, std::to_string(count));
    };
    addUnlessNone("not protected", figures.protection.passedOver);
    addUnlessNone("FEC of unequal packets", figures.protection.notTurned);
    addUnlessNone("FEC over holes, left out", figures.protection.overHoles);
    addSourceRows(table, *source);
    publish(fmt::format("{} -> {}", platform::utf8From(options.in), platform::utf8From(options.out)), table,
            "", {}, "");
}

}  // namespace

void addProtectCommand(CLI::App& app) {
    const auto options = std::make_shared<ProtectOptions>();
    CLI::App* command = app.add_subcommand("protect", "Add FEC packets to the media of a file or capture");
    addPath(*command, "IN", options->in, "Media to protect: .ts, .pcap or .pcapng")->required();
    addPath(*command, "OUT", options->out, "Capture to write, media and FEC: .pcap or .pcapng")->required();
    addMatrixOptions(*command, options->matrix);
    addFecFormatOption(*command, options->fecFormat);
    addPortOption(*command, options->port);
    addModuleOption(*command, options->module);
    addLogOptions(*command, options->log);
    command->footer(
        "Where IN has holes, no FEC packet is made over them.\n"
        "Examples:\n"
        "  mvrtpfec protect movie.ts movie.pcap --mode both --columns 10 --rows 10\n"
        "  mvrtpfec protect feed.pcapng feed-fec.pcapng --mode column --columns 5 --rows 10 --port 6000");
    command->callback([command, options] {
        requireMatrix(*command, options->matrix);
        runLogged(options->log, "protection of " + platform::utf8From(options->in),
                  {{options->in, options->module}, {options->out}},
                  [&](auto& log) { runProtect(*options, log); });
    });
}

}  // namespace mvrtpfec
