#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "host/io/link_type.h"

namespace mvrtpfec {

/// Where the layers of a captured UDP datagram lie: byte offsets from the start of the frame.
/// Everything before `payload` is inside the frame; the payload too when `complete`.
struct FrameLayers {
    std::size_t network;    ///< IP header
    std::size_t transport;  ///< UDP header
    std::size_t payload;
    std::size_t payloadSize;  ///< as the UDP header says
    std::uint16_t destinationPort;
    bool isIpv6;
    bool complete;  ///< false when the capture ends before the payload does
};

inline constexpr std::size_t ipv4HeaderSize = 20;  // RFC 791 section 3.1, without options
inline constexpr std::size_t ipv6HeaderSize = 40;  // RFC 8200 section 3
inline constexpr std::size_t udpHeaderSize = 8;    // RFC 768

/// Finds the UDP datagram in a captured frame of any bytes; nothing when there is none, when it is a
/// fragment, or when the lengths of its headers contradict each other.
///
/// Understood are up to four 802.1Q and 802.1ad tags, IPv4 options, and IPv6 hop-by-hop, routing and
/// destination options. What follows the length that the IP header states is link-layer padding. An
/// IPv6 packet with hops left in a routing header is not at its destination yet and is passed over.
/// Checksums are not verified: frames captured on their sender often carry unfinished ones.
/// Allocates nothing.
std::optional<FrameLayers> locateUdp(LinkType linkType, std::span<const std::uint8_t> frame);

}  // namespace mvrtpfec
