#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "core/big_endian.h"
#include "host/io/link_type.h"
#include "tests/host/io_test_files.h"

namespace mvrtpfec {

/// A way in which a UDP datagram may be wrapped: the headers up to UDP, lengths still open.
struct Wrapping {
    std::string name;
    LinkType linkType;
    Bytes link;
    Bytes ip;
};

inline Bytes join(std::initializer_list<Bytes> parts) {
    Bytes whole;
    for (const Bytes& part : parts) whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

inline const Bytes ipv4Header = {0x45, 0xb8, 0, 0, 0, 7, 0x40, 0, 64, 17, 0, 0, 192, 0, 2, 7, 233, 252, 0, 9};
inline const Bytes ipv4WithOptions =
    join({{0x47}, Bytes(ipv4Header.begin() + 1, ipv4Header.end()), {0x94, 4, 0, 0, 1, 1, 1, 0}});
inline const Bytes ipv6Addresses = join(
    {{0x20, 1, 0x0d, 0xb8}, Bytes(11, 0), {1}, {0xff, 0x3e, 0, 0x20, 0x20, 1, 0x0d, 0xb8}, Bytes(7, 0), {9}});
inline const Bytes ipv6Header = join({{0x60, 0, 0, 0, 0, 0, 17, 64}, ipv6Addresses});
inline const Bytes ipv6WithExtensions = join({{0x60, 0, 0, 0, 0, 0, 0, 64},
                                              ipv6Addresses,
                                              {43, 0, 5, 2, 0, 0, 1, 0},
                                              {60, 0, 253, 0, 0, 0, 0, 0},
                                              {17, 1, 1, 12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}});

inline std::vector<Wrapping> allWrappings() {
    using enum LinkType;
    const Bytes macs = {1, 0, 0x5e, 0x7c, 0, 9, 2, 0, 0, 0, 0, 7};
    const Bytes sll = {0, 0, 0, 1, 0, 6, 2, 0, 0, 0, 0, 7, 0, 0};
    const Bytes sll2 = {0, 0, 0, 0, 0, 2, 0, 1, 0, 6, 2, 0, 0, 0, 0, 7, 0, 0};
    const Bytes tags = {0x88, 0xa8, 0, 6, 0x81, 0, 0, 5};
    return {
        {"ethernet", ethernet, join({macs, {8, 0}}), ipv4Header},
        {"ethernet, IPv4 options", ethernet, join({macs, {8, 0}}), ipv4WithOptions},
        {"ethernet, IPv6", ethernet, join({macs, {0x86, 0xdd}}), ipv6Header},
        {"ethernet, IPv6 extensions", ethernet, join({macs, {0x86, 0xdd}}), ipv6WithExtensions},
        {"VLAN in VLAN, IPv6", ethernet, join({macs, tags, {0x86, 0xdd}}), ipv6Header},
        {"raw, IPv4", raw, {}, ipv4Header},
        {"raw, IPv6", raw, {}, ipv6Header},
        {"IPv4", ipv4, {}, ipv4Header},
        {"IPv6", ipv6, {}, ipv6Header},
        {"BSD loopback", null, {2, 0, 0, 0}, ipv4Header},
        {"BSD loopback, big-endian IPv6", null, {0, 0, 0, 30}, ipv6Header},
        {"OpenBSD loopback", loop, {0, 0, 0, 2}, ipv4Header},
        {"Linux cooked", linuxSll, join({sll, {8, 0}}), ipv4Header},
        {"Linux cooked, VLAN, IPv6", linuxSll, join({sll, {0x81, 0, 0, 5, 0x86, 0xdd}}), ipv6Header},
        {"Linux cooked 2", linuxSll2, join({{8, 0}, sll2}), ipv4Header},
    };
}

/// The whole frame; the checksums are not zero and not right, as on a sender that leaves them to its card.
inline Bytes wrap(const Wrapping& how, std::uint16_t port, const Bytes& payload) {
    Bytes frame = join({how.link, how.ip, {0x30, 0x39, 0, 0, 0, 0, 0xab, 0xcd}, payload});
    std::uint8_t* ip = &frame[how.link.size()];
    std::uint8_t* udp = ip + how.ip.size();
    const bool isIpv6 = how.ip[0] >> 4 == 6;
    const std::size_t ipSize = frame.size() - how.link.size() - (isIpv6 ? 40 : 0);
    writeBigEndian16(ip + (isIpv6 ? 4 : 2), static_cast<std::uint16_t>(ipSize));
    writeBigEndian16(udp + 2, port);
    writeBigEndian16(udp + 4, static_cast<std::uint16_t>(8 + payload.size()));
    return frame;
}

/// `count` bytes that start like an RTP packet of the given number.
inline Bytes rtpPacket(std::uint16_t sequenceNumber, std::size_t count) {
    Bytes packet(count, static_cast<std::uint8_t>(sequenceNumber));
    packet[0] = 0x80;
    packet[1] = 33;
    writeBigEndian16(&packet[2], sequenceNumber);
    return packet;
}

}  // namespace mvrtpfec
