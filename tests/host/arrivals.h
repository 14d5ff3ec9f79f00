#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <vector>

#include "core/fec_composer.h"
#include "host/graph/channel.h"
#include "host/graph/matrix_config.h"
#include "host/io/datagram.h"

namespace mvrtpfec {

struct Arrival {
    StreamPort port;
    std::vector<std::uint8_t> bytes;

    bool operator==(const Arrival&) const = default;
};
using Arrivals = std::vector<Arrival>;

/// The n-th media packet of a stream: its content follows from number and source.
std::vector<std::uint8_t> mediaPacket(std::uint16_t number, std::uint8_t source = 1, std::size_t size = 200);

/// Media packets from `first` on with the FEC packets that they complete.
Arrivals protectedStream(std::uint16_t first, std::size_t count, const MatrixConfig& matrix,
                         std::uint8_t source = 1);

/// What a lossy network leaves of it.
Arrivals throughChannel(const Arrivals& sent, const ChannelConfig& config);

/// What came of streams that lose packets, restart, wrap and fall silent for thousands of packets, and what
/// was sent, each packet with a timestamp of its own. The first and last packets of each run have come.
struct Story {
    Arrivals arrivals;
    std::set<std::uint32_t> sent;
    std::set<std::uint32_t> came;
};
Story randomStory(std::uint32_t seed);

}  // namespace mvrtpfec
