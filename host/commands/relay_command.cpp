#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "host/commands/channel_options.h"
#include "host/commands/commands.h"
#include "host/commands/network_options.h"
#include "host/graph/channel.h"
#include "host/io/standard_error.h"
#include "host/live/delay_line.h"
#include "host/live/stream_readers.h"
#include "host/live/stream_writers.h"
#include "host/log/program_log.h"
#include "host/net/own_address.h"
#include "platform/process/signals.h"

namespace mvrtpfec {

namespace {

using namespace std::chrono_literals;

struct RelayOptions {
    std::string from;
    std::string to;
    ChannelConfig channel{.loss = 0, .fecLoss = 0};
    DelayConfig delay;
    ReceivingOptions receiving;
    LogOptions log;
};

SendingOptions sendingOn(const std::string& interfaceName) {
    SendingOptions made;
    made.interfaceName = interfaceName;
    return made;
}

/// Sends on what comes in, as a bad network would.
class Relay {
public:
    explicit Relay(const RelayOptions& options)
        : writers_(parseStream(options.to), sendingOn(options.receiving.interfaceName)),
          delay_(options.delay,
                 [this](StreamPort port, const auto& packet) { writers_.of(port).write(packet); }),
          channel_(options.channel,
                   [this](StreamPort port, const auto& packet) {
                       delay_.push(port, packet, std::chrono::steady_clock::now());
                   }),
          readers_(parseStream(options.from), options.receiving, [this](StreamPort port, auto packet) {
              ++received_;
              channel_.push(port, {packet->view.data, packet->view.data + packet->view.length});
          }) {}

    void run() {
        while (!platform::wasInterrupted()) {
            readers_.runFor(untilNext());
            delay_.letOut(std::chrono::steady_clock::now());
            writers_.flush();
        }
        // What is under way arrives, sooner than it would have.
        channel_.finish();
        delay_.letOut(SteadyTime::max());
        writers_.flush();
    }

    std::string text() const {
        std::uint64_t sent = 0;
        for (const StreamPort port : {StreamPort::media, StreamPort::fecA, StreamPort::fecB})
            sent += writers_.of(port).packets();
        return fmt::format(
            "received {}, sent {}, dropped {} media packets and {} FEC packets; refused by the system {}, "
            "too "
            "many under way {}",
            received_, sent, channel_.droppedMedia(), channel_.droppedFec(), writers_.refused(),
            delay_.overflowed());
    }

private:
    std::chrono::milliseconds untilNext() const {
        const auto next = delay_.next();
        if (!next) return 5ms;
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(*next - std::chrono::steady_clock::now());
        return std::clamp<std::chrono::milliseconds>(left, 0ms, 5ms);
    }

    StreamWriters writers_;
    DelayLine delay_;
    Channel channel_;
    StreamReaders readers_;
    std::uint64_t received_ = 0;
};

void runRelay(const RelayOptions& options, mvn::log::ILogger& log) {
    platform::ignoreHangUp();
    requireChannel(options.channel);
    requireElsewhere(parseStream(options.to), parseStream(options.from));
    Relay relay(options);
    relay.run();
    tellPerson(relay.text() + "\n");
    log.Log(2, "%s", relay.text().c_str());
}

}  // namespace

void addRelayCommand(CLI::App& app) {
    const auto options = std::make_shared<RelayOptions>();
    CLI::App* command = app.add_subcommand("relay", "Pass a protected stream on as a bad network would");
    command
        ->add_option("--from", options->from,
                     "Where the media come to; FECA two ports above, FECB four, or as said")
        ->type_name("ADDR:PORT[,FECA,FECB]")
        ->required();
    command->add_option("--to", options->to, "Where they go on to")
        ->type_name("ADDR:PORT[,FECA,FECB]")
        ->required();
    addChannelOptions(*command, options->channel);
    command->add_option("--delay", options->delay.delay, "Milliseconds that every packet takes")
        ->check(CLI::Range(0.0, 10000.0))
        ->type_name("MS");
    command->add_option("--jitter", options->delay.jitter, "Milliseconds more at most, by chance")
        ->check(CLI::Range(0.0, 10000.0))
        ->type_name("MS");
    addReceivingOptions(*command, options->receiving);
    addLogOptions(*command, options->log);
    command->footer(
        "Examples:\n"
        "  mvrtpfec relay --from 127.0.0.1:5004 --to 127.0.0.1:6004 --loss 0.03 --burst 4 --delay 20");
    command->callback([command, options] {
        if (command->count("--fec-loss") == 0) options->channel.fecLoss = options->channel.loss;
        options->delay.seed = options->channel.seed;
        runLogged(options->log, "relay from " + options->from, {},
                  [&](auto& log) { runRelay(*options, log); });
    });
}

}  // namespace mvrtpfec
