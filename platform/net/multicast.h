#pragma once

#include <cstddef>

#include "platform/net/socket.h"

namespace platform {

/// An address of the system's, as socket libraries give it out (sockaddr).
struct SocketAddress {
    const void* data = nullptr;
    std::size_t size = 0;
};

/// Whether a socket that is bound to a group's address takes its datagrams alone; elsewhere it can't be.
#ifdef _WIN32
inline constexpr bool canBindToGroup = false;
#else
inline constexpr bool canBindToGroup = true;
#endif

/// The number of a network interface by its name or its number in digits; 0 for none.
unsigned interfaceIndex(const char* name) noexcept;

/// Joins a group on an interface (index 0: the system's choice), from one source alone where `source` has
/// data (RFC 3678, section 5). False when the system refuses.
bool joinGroup(SocketHandle socket, SocketAddress group, SocketAddress source, unsigned index) noexcept;

/// Where what is sent to groups leaves.
bool setMulticastInterface(SocketHandle socket, bool isIpv6, unsigned index) noexcept;

}  // namespace platform
