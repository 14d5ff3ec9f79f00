#include <winsock2.h>
#include <ws2tcpip.h>

#include "platform/net/socket.h"

namespace platform {

bool sendWhole(SocketHandle socket, const char* bytes, std::size_t count) noexcept {
    const int sent = send(static_cast<SOCKET>(socket), bytes, static_cast<int>(count), 0);
    return sent >= 0 && static_cast<std::size_t>(sent) == count;
}

bool setTrafficClass(SocketHandle socket, bool isIpv6, int value) noexcept {
    const char* const bytes = reinterpret_cast<const char*>(&value);
    return setsockopt(static_cast<SOCKET>(socket), isIpv6 ? IPPROTO_IPV6 : IPPROTO_IP,
                      isIpv6 ? IPV6_TCLASS : IP_TOS, bytes, sizeof value) == 0;
}

void setReceiveBuffer(SocketHandle socket, int bytes) noexcept {
    setsockopt(static_cast<SOCKET>(socket), SOL_SOCKET, SO_RCVBUF, reinterpret_cast<const char*>(&bytes),
               sizeof bytes);
}

std::error_code lastSocketError() noexcept {
    return {WSAGetLastError(), std::system_category()};
}

}  // namespace platform
