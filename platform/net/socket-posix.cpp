#include <cerrno>

#include <netinet/in.h>
#include <sys/socket.h>

#include "platform/net/socket.h"

namespace platform {

bool sendWhole(SocketHandle socket, const char* bytes, std::size_t count) noexcept {
    const auto sent = send(static_cast<int>(socket), bytes, count, MSG_NOSIGNAL);
    return sent >= 0 && static_cast<std::size_t>(sent) == count;
}

bool setTrafficClass(SocketHandle socket, bool isIpv6, int value) noexcept {
    return setsockopt(static_cast<int>(socket), isIpv6 ? IPPROTO_IPV6 : IPPROTO_IP,
                      isIpv6 ? IPV6_TCLASS : IP_TOS, &value, sizeof value) == 0;
}

void setReceiveBuffer(SocketHandle socket, int bytes) noexcept {
    const int descriptor = static_cast<int>(socket);
    if (setsockopt(descriptor, SOL_SOCKET, SO_RCVBUFFORCE, &bytes, sizeof bytes) != 0)
        setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
}

std::error_code lastSocketError() noexcept {
    return {errno, std::system_category()};
}

}  // namespace platform
