#include <filesystem>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "host/commands/commands.h"
#include "host/commands/media_options.h"
#include "host/commands/options.h"
#include "host/commands/unit_report.h"
#include "host/io/file_error.h"
#include "host/io/own_ssrc.h"
#include "host/io/packet_sink.h"
#include "host/log/program_log.h"
#include "host/media/no_packet_reason.h"
#include "host/media/packet_recorder.h"
#include "host/media/picture_closer.h"
#include "host/media/session_file.h"
#include "host/media/unit_clock.h"
#include "host/usage_error.h"
#include "platform/files/utf8_path.h"
#include "rtp_media/chain/rtp_packet_builder.h"

namespace mvrtpfec {

namespace {

constexpr std::uint32_t transportPayloadType = 33;
constexpr std::uint32_t dynamicPayloadType = 96;

struct PacketizeOptions {
    std::filesystem::path in;
    std::filesystem::path out;
    std::filesystem::path sdp;
    std::filesystem::path json;
    const StreamFormat* format = nullptr;
    std::optional<FrameRate> frameRate;
    std::optional<std::uint32_t> payloadType;
    ParameterSetMode parameterSets = ParameterSetMode::sdp;
    std::uint16_t port = defaultMediaPort;
    std::uint32_t ssrc = ownSsrc;
    LogOptions log;

    bool isTransport() const { return format->type == StreamType::mpeg2ts; }
    std::uint32_t sentPayloadType() const {
        return payloadType.value_or(isTransport() ? transportPayloadType : dynamicPayloadType);
    }
};

struct PacketizeFigures {
    UnitFigures units;
    std::uint64_t refused = 0;
    PacketFigures packets;
    std::string session;
};

/// What stands between the parser and the packetizer: first the timing of units that have none, then what
/// counts them, then for H.264 what ends pictures.
class Packetizing {
public:
    Packetizing(const PacketizeOptions& options, PacketSink& sink)
        : options_(options),
          recorder_(sink, options.ssrc),
          packetizer_(RTPPacketBuilder::create(options.format->type, options.sentPayloadType(), options.port,
                                               &recorder_, options.parameterSets, TimestampMode::decode)),
          closer_(*packetizer_),
          counter_(isH264() ? static_cast<NALListener*>(&closer_) : packetizer_.get(),
                   [this](const NAL& unit, const std::string&) { reason_.look(unit); }),
          clock_(isH264() && !options.frameRate ? nullptr
                                                : makeUnitClock(options.format->type, options.frameRate)),
          timer_(clock_.get(), counter_) {}

    PacketizeFigures run(SampleSource& samples) {
        const auto parser = createNALBuilder(options_.format->type);
        parser->setListener(&timer_);
        PacketizeFigures figures;
        figures.refused = feed(samples, *parser);
        figures.units = counter_.figures();
        figures.packets = recorder_.figures();
        if (figures.packets.packets == 0)
            throw FileError(options_.in,
                            "no packet came out: " + reason_.text(options_.format->type, figures.units));
        if (packetizer_->sdpReady())
            figures.session =
                sessionText(*packetizer_, isVideo(options_.format->type) || options_.isTransport());
        else if (!options_.sdp.empty())
            throw FileError(options_.in, NoPacketReason::sessionText(options_.format->type));
        return figures;
    }

private:
    bool isH264() const { return options_.format->type == StreamType::h264; }

    const PacketizeOptions& options_;
    NoPacketReason reason_;
    PacketRecorder recorder_;
    std::unique_ptr<RTPPacketBuilder> packetizer_;
    PictureCloser closer_;
    UnitCounter counter_;
    std::unique_ptr<UnitClock> clock_;
    UnitTimer timer_;
};

void report(const PacketizeOptions& options, const PacketizeFigures& figures, SampleSource& samples) {
    constexpr double ticksPerSecond = 90000;
    const PacketFigures& packets = figures.packets;
    const double span = static_cast<double>(packets.span) / ticksPerSecond;
    auto json = toJson(figures.units, figures.refused);
    json.update({{"packets", packets.packets},
                 {"packet_bytes", packets.bytes},
                 {"span", span},
                 {"payload_type", options.sentPayloadType()},
                 {"clock_rate", packets.clockRate},
                 {"ssrc", options.ssrc}});
    if (samples.skipped() != nullptr) json["skipped_bytes"] = samples.skipped()->total();
    Table table;
    addRows(table, figures.units, figures.refused);
    table.emplace_back("packets", std::to_string(packets.packets));
    table.emplace_back("packet bytes", std::to_string(packets.bytes));
    table.emplace_back("first to last", secondsText(span));
    addSkippedRow(table, samples.skipped());
    publish(fmt::format("{} -> {}", platform::utf8From(options.in), platform::utf8From(options.out)), table,
            "", json, options.json);
}

void checkOptions(const PacketizeOptions& options) {
    if (!options.format->hasPacketizer)
        throw UsageError(fmt::format("{} can't be packetized, only listed: mvrtpfec units IN --format {}",
                                     options.format->name, options.format->name));
    if (options.isTransport() && options.sentPayloadType() != transportPayloadType)
        throw UsageError("a transport stream goes as payload type 33 and no other");
    if (formatOf(options.out) == FileFormat::transportStream)
        throw UsageError(platform::utf8From(options.out) + ": packets go into a .pcap or .pcapng file");
}

void runPacketize(const PacketizeOptions& options, mvn::log::ILogger& log) {
    checkOptions(options);
    const auto samples = openSamples(options.in, options.format->type);
    const auto sink =
        openSink(options.out, options.port, std::make_shared<FrameTemplate>(LinkType::ethernet));
    const PacketizeFigures figures = Packetizing(options, *sink).run(*samples);
    if (!options.sdp.empty()) writeSession(options.sdp, figures.session);
    sink->finish();
    tellSkipped(samples->skipped(), &log);
    report(options, figures, *samples);
}

void addPacketOptions(CLI::App& command, PacketizeOptions& options) {
    constexpr int mostPayloadType = 127;
    command
        .add_option("--payload-type", options.payloadType,
                    "RTP payload type [96; of a transport stream 33, and no other]")
        ->check(CLI::Range(0, mostPayloadType))
        ->type_name("N");
    addParameterSetOption(command, options.parameterSets);
    command.add_option("--ssrc", options.ssrc, "SSRC of the packets")->capture_default_str()->type_name("N");
}

}  // namespace

void addPacketizeCommand(CLI::App& app) {
    const auto options = std::make_shared<PacketizeOptions>();
    CLI::App* command = app.add_subcommand("packetize", "Make RTP packets of an elementary stream");
    addPath(*command, "IN", options->in, "Elementary stream")->required();
    addPath(*command, "OUT", options->out, "Packets to write: .pcap or .pcapng")->required();
    addFormatOption(*command, options->format);
    addFrameRateOption(*command, options->frameRate);
    addPacketOptions(*command, *options);
    addPortOption(*command, options->port);
    addPath(*command, "--sdp", options->sdp, "Write a session description for players to FILE")
        ->type_name("FILE");
    addJsonOption(*command, options->json);
    addLogOptions(*command, options->log);
    command->footer(formatList(true) +
                    "Examples:\n"
                    "  mvrtpfec packetize movie.264 movie.pcap --format h264 --sdp movie.sdp\n"
                    "  mvrtpfec packetize sound.aac sound.pcapng --format aac-adts --payload-type 97");
    command->callback([options] {
        runLogged(options->log, "packetizing of " + platform::utf8From(options->in),
                  {{options->in}, {options->out, options->sdp, options->json}},
                  [&](auto& log) { runPacketize(*options, log); });
    });
}

}  // namespace mvrtpfec
