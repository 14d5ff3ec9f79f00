#include "host/commands/channel_options.h"

#include <stdexcept>

#include <CLI/CLI.hpp>

#include "host/usage_error.h"

namespace mvrtpfec {

namespace {

/// Up to here a seed is read exactly whatever reads it.
constexpr double maxSeed = 0x1p53;

}  // namespace

void addChannelOptions(CLI::App& command, ChannelConfig& channel) {
    command.add_option("--loss", channel.loss, "Average share of packets lost")
        ->capture_default_str()
        ->type_name("SHARE");
    command.add_option("--fec-loss", channel.fecLoss, "The same for FEC packets, where it differs")
        ->type_name("SHARE");
    command
        .add_option("--burst", channel.burst, "Mean length of a loss burst in packets; 1 is independent loss")
        ->capture_default_str()
        ->type_name("N");
    command.add_option("--reorder", channel.reorder, "Places by which a packet may be overtaken")
        ->check(CLI::Range(0, maxReorder))
        ->capture_default_str()
        ->type_name("N");
    command.add_option("--duplicate", channel.duplicate, "Share of packets that come twice")
        ->capture_default_str()
        ->type_name("SHARE");
    command.add_option("--seed", channel.seed, "Seed of the channel: the same seed, the same losses")
        ->check(CLI::Range(0.0, maxSeed))
        ->capture_default_str()
        ->type_name("S");
}

void requireChannel(const ChannelConfig& channel) {
    try {
        checkChannel(channel);
    } catch (const std::invalid_argument& error) {
        throw UsageError(error.what());
    }
}

}  // namespace mvrtpfec
