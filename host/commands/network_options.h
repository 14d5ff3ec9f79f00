#pragma once

#include <cstdint>
#include <optional>

#include "host/net/udp_sockets.h"

namespace CLI {
class App;
}

// Options of the commands that work over a network.

namespace mvrtpfec {

/// --bitrate: a number with k, M or G behind it, or "auto" for none.
void addBitRateOption(CLI::App& command, std::optional<std::uint64_t>& bitRate);
/// --ttl, --interface, --source-port and --dscp.
void addSendingOptions(CLI::App& command, SendingOptions& options);
/// --output-interface, --ttl and --dscp, of a stream that goes on.
void addOnwardOptions(CLI::App& command, SendingOptions& options);
/// --interface and --source.
void addReceivingOptions(CLI::App& command, ReceivingOptions& options);
/// --source alone.
void addSourceOption(CLI::App& command, ReceivingOptions& options);

}  // namespace mvrtpfec
