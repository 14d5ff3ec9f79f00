#pragma once

#include <cstddef>
#include <cstdint>
#include <system_error>

namespace platform {

/// A socket of the system's, as native handles of socket libraries are.
using SocketHandle = std::uintptr_t;

/// One call of send(); whether it took everything.
bool sendWhole(SocketHandle socket, const char* bytes, std::size_t count) noexcept;

/// The traffic class byte of what is sent, with the DSCP in its upper six bits (RFC 2474). False when the
/// system refuses.
bool setTrafficClass(SocketHandle socket, bool isIpv6, int value) noexcept;

/// Asks for room for so many bytes that wait to be read; the system may grant less, and more to a privileged
/// program.
void setReceiveBuffer(SocketHandle socket, int bytes) noexcept;

/// Why the last call for a socket on this thread failed.
std::error_code lastSocketError() noexcept;

}  // namespace platform
