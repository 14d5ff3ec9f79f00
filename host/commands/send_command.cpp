#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <utility>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "host/commands/commands.h"
#include "host/commands/network_options.h"
#include "host/commands/options.h"
#include "host/graph/filter_graph.h"
#include "host/io/standard_error.h"
#include "host/live/media_input.h"
#include "host/live/pacer.h"
#include "host/live/stream_writers.h"
#include "host/log/program_log.h"
#include "host/net/endpoint.h"
#include "host/net/own_address.h"
#include "host/plan/matrix_plan.h"
#include "host/stages/protection.h"
#include "platform/files/utf8_path.h"
#include "platform/process/signals.h"

namespace mvrtpfec {

namespace {

struct SendOptions {
    std::string input;
    std::string to;
    MatrixConfig matrix;
    FecFormat fecFormat = FecFormat::native;
    MediaInputOptions media;
    SendingOptions sending;
    std::filesystem::path module;
    LogOptions log;
};

/// From the input through the sender filter to the network.
class Sending {
public:
    Sending(const SendOptions& options, mvn::log::ILogger& log)
        : log_(log),
          input_(openMediaInput(options.input, options.media)),
          writers_(parseStream(options.to), options.sending),
          graph_(options.module),
          protection_(graph_, options.matrix, options.fecFormat,
                      [this](StreamPort port, ConstRtpPacketView fec) {
                          writers_.of(port).write({fec.data, fec.length});
                      }) {
        graph_.run();
    }

    /// What has been read leaves also when the input breaks.
    void run() {
        try {
            sendAll();
        } catch (const std::exception&) {
            writers_.flush();
            tellNotices();
            throw;
        }
        writers_.flush();
        tellNotices();
    }

    void report() const {
        const std::string text = fmt::format(
            "sent {} media packets, {} FEC packets on FECA, {} on FECB; refused by the system {}, no media "
            "{}, bytes skipped {}, FEC left out of unequal packets {}, over holes in the input {}",
            writers_.of(StreamPort::media).packets(), writers_.of(StreamPort::fecA).packets(),
            writers_.of(StreamPort::fecB).packets(), writers_.refused(), input_->leftOut(),
            input_->skippedBytes(), protection_.figures().notTurned, protection_.figures().overHoles);
        tellPerson(text + "\n");
        log_.Log(2, "%s", text.c_str());
    }

private:
    void sendAll() {
        DuePacket next;
        while (!platform::wasInterrupted()) {
            if (input_->wouldWait()) writers_.flush();
            const MediaInput::Got got = input_->read(next);
            if (got == MediaInput::Got::end) break;
            if (got == MediaInput::Got::packet && isTime(next)) send(std::move(next.packet));
            tellNotices();
        }
    }

    /// Nobody who reads them is waited for.
    void tellNotices() {
        for (const std::string& notice : input_->takeNotices()) {
            tellPerson("mvrtpfec: " + notice + "\n", std::chrono::milliseconds(0));
            log_.Log(1, "%s", notice.c_str());
        }
    }

    bool isTime(const DuePacket& next) {
        if (!next.due) return true;
        if (pacer_.isAhead(*next.due)) writers_.flush();
        return pacer_.waitUntil(*next.due);
    }

    void send(std::unique_ptr<RtpPacket> packet) {
        writers_.of(StreamPort::media).write({packet->view.data, packet->view.length});
        if (packet->view.isValid()) protection_.push(std::move(packet));
    }

    mvn::log::ILogger& log_;
    std::unique_ptr<MediaInput> input_;
    StreamWriters writers_;
    FilterGraph graph_;
    Protection protection_;
    Pacer pacer_;
};

/// A sender that begins anew is told from the one before (RFC 3550, sections 5.1 and 8.1).
void beginAnywhere(MediaInputOptions& media) {
    std::random_device random;
    media.ssrc = random();
    media.firstNumber = static_cast<std::uint16_t>(random());
}

std::string protectionText(const MatrixConfig& matrix, std::optional<std::uint64_t> bitRate) {
    const MatrixCost cost = costOf(matrix);
    std::string text = fmt::format(
        "{} x {}: {:.1f} % added, bursts of {} packets rebuilt, received {} packets late", matrix.columns,
        matrix.rows, cost.overhead * 100, cost.longestBurst, 2 * cost.delayPackets);
    if (bitRate) text += fmt::format(" ({:.0f} ms)", 2 * delayOf(cost, *bitRate));
    return text;
}

void runSend(const SendOptions& options, mvn::log::ILogger& log) {
    platform::ignoreHangUp();
    if (const auto source = parseNetworkName(options.input))
        requireElsewhere(parseStream(options.to), {&*source, 1});
    Sending sending(options, log);
    tellPerson(protectionText(options.matrix, options.media.bitRate) + "\n");
    sending.run();
    sending.report();
}

}  // namespace

void addSendCommand(CLI::App& app) {
    const auto options = std::make_shared<SendOptions>();
    CLI::App* command = app.add_subcommand("send", "Protect a transport stream and send it over UDP");
    command
        ->add_option("INPUT", options->input,
                     "A .ts file, - , udp://ADDR:PORT (datagrams of any size) or rtp://ADDR:PORT")
        ->required();
    command
        ->add_option("--to", options->to, "Where the media go; FECA two ports above, FECB four, or as said")
        ->type_name("ADDR:PORT[,FECA,FECB]")
        ->required();
    addMatrixOptions(*command, options->matrix);
    addFecFormatOption(*command, options->fecFormat);
    addBitRateOption(*command, options->media.bitRate);
    addSourceOption(*command, options->media.receiving);
    command
        ->add_option("--input-interface", options->media.receiving.interfaceName,
                     "Network interface for an input group, where it isn't the output's")
        ->type_name("IF");
    command->add_flag("--loop", options->media.loop, "Play a file again and again, as one stream");
    addSendingOptions(*command, options->sending);
    addModuleOption(*command, options->module);
    addLogOptions(*command, options->log);
    command->footer(
        "Examples:\n"
        "  mvrtpfec send movie.ts --to 239.1.2.3:5004 --mode both --columns 10 --rows 10 --loop\n"
        "  mvrtpfec send rtp://0.0.0.0:6000 --to 192.0.2.7:5004 --mode column --columns 5 --rows 10");
    command->callback([command, options] {
        requireMatrix(*command, options->matrix);
        if (options->media.receiving.interfaceName.empty())
            options->media.receiving.interfaceName = options->sending.interfaceName;
        beginAnywhere(options->media);
        const RunFiles files{{platform::pathFromUtf8(options->input), options->module}, {}};
        runLogged(options->log, "sending of " + options->input, files,
                  [&](auto& log) { runSend(*options, log); });
    });
}

}  // namespace mvrtpfec
