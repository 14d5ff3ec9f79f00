#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

#include "core/rtp_packet.h"

namespace mvrtpfec {

/// The three UDP ports of a protected stream: P, P + 2 and P + 4.
enum class StreamPort : std::uint8_t { media, fecA, fecB };

constexpr int udpPortOf(StreamPort port, std::uint16_t mediaPort) {
    return mediaPort + 2 * static_cast<int>(port);
}

/// No UDP payload is longer; what follows the header of an IPv4 packet is less.
inline constexpr std::int32_t maxDatagramSize = 65535;

/// One UDP datagram of the stream, on its way from a source to a sink.
struct Datagram {
    StreamPort port = StreamPort::media;
    std::chrono::nanoseconds time{0};   ///< since the Unix epoch; for a .ts file since its start
    std::vector<std::uint8_t> payload;  ///< the UDP payload: one RTP packet, its bytes not yet judged
    std::vector<std::uint8_t> frame;  ///< the captured frame that carried it, whole; empty when there is none
};

/// A look at a datagram's payload as an RTP packet.
inline ConstRtpPacketView viewOf(const std::vector<std::uint8_t>& payload) {
    return {payload.data(), static_cast<std::uint16_t>(payload.size())};
}

}  // namespace mvrtpfec
