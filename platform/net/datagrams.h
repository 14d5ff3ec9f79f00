#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/net/socket.h"

// Datagrams in batches: one system call for many where the system has one.

namespace platform {

/// Where a datagram lies or is to lie.
struct DatagramBuffer {
    std::uint8_t* data = nullptr;
    std::size_t size = 0;  ///< bytes; of a receive that is done what came, more than there was room for if so
};

/// Takes what waits at a non-blocking socket, as many as there are buffers at most. How many came; the rest
/// of the buffers are left alone.
std::size_t receiveDatagrams(SocketHandle socket, std::span<DatagramBuffer> buffers) noexcept;

/// Sends to where the socket is connected. How many the system took, in order; fewer when it refuses one.
std::size_t sendDatagrams(SocketHandle socket, std::span<const DatagramBuffer> buffers) noexcept;

/// Datagrams that the system dropped since the socket was opened, because nobody had read those before; 0
/// where it doesn't tell.
std::uint32_t droppedDatagrams(SocketHandle socket) noexcept;

}  // namespace platform
