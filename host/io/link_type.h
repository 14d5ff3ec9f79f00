#pragma once

#include <cstdint>

namespace mvrtpfec {

/// Link layers whose frames are understood. The values are those that capture files carry (LINKTYPE_
/// numbers, https://www.tcpdump.org/linktypes.html); libpcap's DLT_ numbers differ for raw IP.
enum class LinkType : std::uint16_t {
    null = 0,        ///< BSD loopback, address family in the byte order of the capturing host
    ethernet = 1,    ///< with or without VLAN tags
    raw = 101,       ///< IPv4 or IPv6, told by the version
    loop = 108,      ///< OpenBSD loopback, address family in network byte order
    linuxSll = 113,  ///< Linux cooked capture
    ipv4 = 228,
    ipv6 = 229,
    linuxSll2 = 276,  ///< Linux cooked capture, second version
};

}  // namespace mvrtpfec
