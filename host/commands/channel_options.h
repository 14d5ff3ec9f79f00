#pragma once

#include "host/graph/channel.h"

namespace CLI {
class App;
}

namespace mvrtpfec {

/// --loss, --fec-loss, --burst, --reorder, --duplicate and --seed.
void addChannelOptions(CLI::App& command, ChannelConfig& channel);

/// Throws UsageError with the channel's own message.
void requireChannel(const ChannelConfig& channel);

}  // namespace mvrtpfec
