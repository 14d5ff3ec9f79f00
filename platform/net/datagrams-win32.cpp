#include <winsock2.h>

#include "platform/net/datagrams.h"

namespace platform {

std::size_t receiveDatagrams(SocketHandle socket, std::span<DatagramBuffer> buffers) noexcept {
    std::size_t came = 0;
    for (DatagramBuffer& buffer : buffers) {
        const int length = recv(static_cast<SOCKET>(socket), reinterpret_cast<char*>(buffer.data),
                                static_cast<int>(buffer.size), 0);
        if (length < 0 && WSAGetLastError() == WSAEMSGSIZE)
            ++buffer.size;
        else if (length < 0)
            break;
        else
            buffer.size = static_cast<std::size_t>(length);
        ++came;
    }
    return came;
}

std::size_t sendDatagrams(SocketHandle socket, std::span<const DatagramBuffer> buffers) noexcept {
    std::size_t sent = 0;
    for (const DatagramBuffer& buffer : buffers) {
        if (!sendWhole(socket, reinterpret_cast<const char*>(buffer.data), buffer.size)) break;
        ++sent;
    }
    return sent;
}

std::uint32_t droppedDatagrams(SocketHandle) noexcept {
    return 0;
}

}  // namespace platform
