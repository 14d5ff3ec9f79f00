#pragma once

#include <CLI/CLI.hpp>

#include "host/graph/channel.h"

namespace mvrtpfec {

/// --loss, --fec-loss, --burst, --reorder, --duplicate and --seed.
void addChannelOptions(CLI::App& command, ChannelConfig& channel);

/// Throws UsageError with the channel's own message.
void requireChannel(const ChannelConfig& channel);

}  // namespace mvrtpfec
