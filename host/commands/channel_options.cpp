#include "host/commands/channel_options.h"

#include <charconv>
#include <stdexcept>
#include <string>
#include <string_view>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "host/usage_error.h"

namespace mvrtpfec {

namespace {

/// Up to here a seed is read exactly whatever reads it.
constexpr double maxSeed = 0x1p53;

double parseShare(const std::string& option, const std::string& text) {
    double share = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, share);
    const std::string_view unit(parsed.ptr, end);
    if (parsed.ec != std::errc() || (!unit.empty() && unit != "%" && unit != " %"))
        throw CLI::ValidationError(option, "'" + text + "' is no share, as 0.03 or 3%");
    return unit.empty() ? share : share / 100;
}

CLI::Option* addShare(CLI::App& command, const std::string& name, double& share, const std::string& help) {
    const auto take = [name, &share](const std::string& text) { share = parseShare(name, text); };
    return command.add_option_function<std::string>(name, take, help)->type_name("SHARE");
}

}  // namespace

void addChannelOptions(CLI::App& command, ChannelConfig& channel) {
    addShare(command, "--loss", channel.loss, "Average share of packets lost, as 0.03 or 3%")
        ->default_str(fmt::format("{}", channel.loss));
    addShare(command, "--fec-loss", channel.fecLoss, "The same for FEC packets, where it differs");
    command
        .add_option("--burst", channel.burst, "Mean length of a loss burst in packets; 1 is independent loss")
        ->capture_default_str()
        ->type_name("N");
    command.add_option("--reorder", channel.reorder, "Places by which a packet may be overtaken")
        ->check(CLI::Range(0, maxReorder))
        ->capture_default_str()
        ->type_name("N");
    addShare(command, "--duplicate", channel.duplicate, "Share of packets that come twice")
        ->default_str(fmt::format("{}", channel.duplicate));
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
