#include "host/io/frame_layers.h"

#include "core/big_endian.h"

namespace mvrtpfec {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint16_t etherTypeIpv4 = 0x0800;
constexpr std::uint16_t etherTypeIpv6 = 0x86dd;
constexpr std::uint8_t protocolUdp = 17;

struct Network {
    std::uint16_t etherType;
    std::size_t offset;
};

struct Transport {
    std::size_t offset;
    std::size_t end;  ///< of the IP packet, by its own header; may lie behind the frame
};

bool holds(Bytes frame, std::size_t offset, std::size_t count) {
    return offset <= frame.size() && count <= frame.size() - offset;
}

// IEEE 802.1Q-2018 clause 9.5; 0x9100 is what equipment wrote for outer tags before 802.1ad.
bool isVlanTag(std::uint16_t etherType) {
    return etherType == 0x8100 || etherType == 0x88a8 || etherType == 0x9100;
}

std::optional<Network> behindTags(Bytes frame, Network at) {
    for (int tags = 0; isVlanTag(at.etherType); ++tags) {
        if (tags == 4 || !holds(frame, at.offset, 4)) return std::nullopt;
        at = {readBigEndian16(&frame[at.offset + 2]), at.offset + 4};
    }
    return at;
}

/// A link header of `size` bytes with an EtherType at `typeOffset`.
std::optional<Network> typedHeader(Bytes frame, std::size_t typeOffset, std::size_t size) {
    if (!holds(frame, 0, size)) return std::nullopt;
    return behindTags(frame, {readBigEndian16(&frame[typeOffset]), size});
}

/// AF_INET is 2 everywhere; AF_INET6 is 10 on Linux, 24, 28 and 30 on the BSDs and macOS.
std::optional<Network> familyHeader(Bytes frame) {
    if (!holds(frame, 0, 4)) return std::nullopt;
    const bool isBigEndian = frame[0] == 0;
    if (frame[1] != 0 || frame[2] != 0 || (!isBigEndian && frame[3] != 0)) return std::nullopt;
    switch (isBigEndian ? frame[3] : frame[0]) {
        case 2:
            return Network{etherTypeIpv4, 4};
        case 10:
        case 24:
        case 28:
        case 30:
            return Network{etherTypeIpv6, 4};
        default:
            return std::nullopt;
    }
}

std::optional<Network> rawIp(Bytes frame) {
    if (frame.empty()) return std::nullopt;
    return Network{frame[0] >> 4 == 6 ? etherTypeIpv6 : etherTypeIpv4, 0};
}

std::optional<Network> locateNetwork(LinkType linkType, Bytes frame) {
    switch (linkType) {
        case LinkType::ethernet:
            return typedHeader(frame, 12, 14);
        case LinkType::linuxSll:
            return typedHeader(frame, 14, 16);
        case LinkType::linuxSll2:
            return typedHeader(frame, 0, 20);
        case LinkType::null:
        case LinkType::loop:
            return familyHeader(frame);
        case LinkType::raw:
            return rawIp(frame);
        case LinkType::ipv4:
            return Network{etherTypeIpv4, 0};
        case LinkType::ipv6:
            return Network{etherTypeIpv6, 0};
    }
    return std::nullopt;
}

// RFC 791 section 3.1.
std::optional<Transport> insideIpv4(Bytes frame, std::size_t offset) {
    if (!holds(frame, offset, ipv4HeaderSize)) return std::nullopt;
    const std::uint8_t* header = &frame[offset];
    const std::size_t headerSize = std::size_t{4} * (header[0] & 0x0fu);
    const std::size_t totalLength = readBigEndian16(header + 2);
    const bool isFragment = (readBigEndian16(header + 6) & 0x3fff) != 0;  // more fragments, or an offset
    if (header[0] >> 4 != 4 || headerSize < ipv4HeaderSize || totalLength < headerSize) return std::nullopt;
    if (isFragment || header[9] != protocolUdp) return std::nullopt;
    return Transport{offset + headerSize, offset + totalLength};
}

// RFC 8200 section 4: hop-by-hop, routing and destination options share one form.
bool isPassableExtension(std::uint8_t header) {
    return header == 0 || header == 43 || header == 60;
}

// RFC 8200 sections 3 and 4.
std::optional<Transport> insideIpv6(Bytes frame, std::size_t offset) {
    if (!holds(frame, offset, ipv6HeaderSize) || frame[offset] >> 4 != 6) return std::nullopt;
    const std::size_t end = offset + ipv6HeaderSize + readBigEndian16(&frame[offset + 4]);
    std::uint8_t next = frame[offset + 6];
    std::size_t at = offset + ipv6HeaderSize;
    while (isPassableExtension(next)) {
        if (!holds(frame, at, 8)) return std::nullopt;
        const bool hasHopsLeft = next == 43 && frame[at + 3] != 0;
        if (hasHopsLeft) return std::nullopt;
        next = frame[at];
        at += 8 * (std::size_t{frame[at + 1]} + 1);
    }
    if (next != protocolUdp) return std::nullopt;
    return Transport{at, end};
}

// RFC 768.
std::optional<FrameLayers> insideUdp(Bytes frame, std::size_t network, Transport udp, bool isIpv6) {
    if (!holds(frame, udp.offset, udpHeaderSize)) return std::nullopt;
    const std::uint8_t* header = &frame[udp.offset];
    const std::size_t length = readBigEndian16(header + 4);
    if (length < udpHeaderSize || udp.offset + length > udp.end) return std::nullopt;
    const std::size_t payloadSize = length - udpHeaderSize;
    const std::size_t payload = udp.offset + udpHeaderSize;
    return FrameLayers{.network = network,
                       .transport = udp.offset,
                       .payload = payload,
                       .payloadSize = payloadSize,
                       .destinationPort = readBigEndian16(header + 2),
                       .isIpv6 = isIpv6,
                       .complete = holds(frame, payload, payloadSize)};
}

}  // namespace

std::optional<FrameLayers> locateUdp(LinkType linkType, std::span<const std::uint8_t> frame) {
    const std::optional<Network> network = locateNetwork(linkType, frame);
    if (!network) return std::nullopt;
    const bool isIpv6 = network->etherType == etherTypeIpv6;
    if (!isIpv6 && network->etherType != etherTypeIpv4) return std::nullopt;
    const std::optional<Transport> transport =
        isIpv6 ? insideIpv6(frame, network->offset) : insideIpv4(frame, network->offset);
    if (!transport) return std::nullopt;
    return insideUdp(frame, network->offset, *transport, isIpv6);
}

}  // namespace mvrtpfec
