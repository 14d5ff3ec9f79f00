#include "host/commands/network_options.h"

#include <charconv>
#include <string>

#include <CLI/CLI.hpp>

#include "host/net/endpoint.h"
#include "host/usage_error.h"

namespace mvrtpfec {

namespace {

std::uint64_t parseBitRate(const std::string& text) {
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number);
    const std::string unit(parsed.ptr, end);
    const double factor = unit.empty() ? 1 : unit == "k" ? 1e3 : unit == "M" ? 1e6 : unit == "G" ? 1e9 : 0;
    const double rate = number * factor;
    if (parsed.ec != std::errc() || !(rate >= 1e3 && rate <= 1e11))
        throw UsageError(text + ": is no bit rate from 1k to 100G");
    return static_cast<std::uint64_t>(rate);
}

void addMarkOptions(CLI::App& command, SendingOptions& options) {
    command.add_option("--ttl", options.ttl, "Hops that datagrams live")
        ->check(CLI::Range(1, 255))
        ->type_name("N");
    command.add_option("--dscp", options.dscp, "Class of service, 0 to 63")
        ->check(CLI::Range(0, 63))
        ->type_name("N");
}

}  // namespace

void addBitRateOption(CLI::App& command, std::optional<std::uint64_t>& bitRate) {
    const auto take = [&bitRate](const std::string& text) {
        if (text != "auto") bitRate = parseBitRate(text);
    };
    command
        .add_option_function<std::string>("--bitrate", take,
                                          "Of a file, in bits per second, as 8M; auto: by its clock [auto]")
        ->type_name("R");
}

void addSendingOptions(CLI::App& command, SendingOptions& options) {
    constexpr int mostSourcePort = 65531;
    addMarkOptions(command, options);
    command.add_option("--interface", options.interfaceName, "Network interface for groups")->type_name("IF");
    command
        .add_option("--source-port", options.sourcePort, "Port of the media's sender; FEC two and four above")
        ->check(CLI::Range(1, mostSourcePort))
        ->type_name("N");
}

void addOnwardOptions(CLI::App& command, SendingOptions& options) {
    addMarkOptions(command, options);
    command.add_option("--output-interface", options.interfaceName, "Network interface for groups sent to")
        ->type_name("IF");
}

void addReceivingOptions(CLI::App& command, ReceivingOptions& options) {
    command.add_option("--interface", options.interfaceName, "Network interface for groups")->type_name("IF");
    addSourceOption(command, options);
}

void addSourceOption(CLI::App& command, ReceivingOptions& options) {
    const auto take = [&options](const std::string& text) { options.source = resolveHost(text, text); };
    command.add_option_function<std::string>("--source", take, "Take a group's datagrams from ADDR alone")
        ->type_name("ADDR");
}

}  // namespace mvrtpfec
