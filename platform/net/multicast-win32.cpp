#include <winsock2.h>
#include <ws2tcpip.h>
// Behind the sockets.
#include <cstdlib>
#include <cstring>

#include <iphlpapi.h>

#include "platform/net/multicast.h"

namespace platform {

namespace {

int levelOf(const sockaddr_storage& address) noexcept {
    return address.ss_family == AF_INET6 ? static_cast<int>(IPPROTO_IPV6) : static_cast<int>(IPPROTO_IP);
}

bool copy(sockaddr_storage& to, SocketAddress from) noexcept {
    if (from.size > sizeof to) return false;
    std::memcpy(&to, from.data, from.size);
    return true;
}

template <class Value>
bool setOption(SocketHandle socket, int level, int name, const Value& value) noexcept {
    return setsockopt(static_cast<SOCKET>(socket), level, name, reinterpret_cast<const char*>(&value),
                      sizeof value) == 0;
}

}  // namespace

unsigned interfaceIndex(const char* name) noexcept {
    if (const unsigned index = if_nametoindex(name); index != 0) return index;
    char* end = nullptr;
    const unsigned long number = std::strtoul(name, &end, 10);
    return *name != '\0' && *end == '\0' ? static_cast<unsigned>(number) : 0;
}

bool joinGroup(SocketHandle socket, SocketAddress group, SocketAddress source, unsigned index) noexcept {
    if (source.data != nullptr) {
        GROUP_SOURCE_REQ request{};
        request.gsr_interface = index;
        if (!copy(request.gsr_group, group) || !copy(request.gsr_source, source)) return false;
        return setOption(socket, levelOf(request.gsr_group), MCAST_JOIN_SOURCE_GROUP, request);
    }
    GROUP_REQ request{};
    request.gr_interface = index;
    if (!copy(request.gr_group, group)) return false;
    return setOption(socket, levelOf(request.gr_group), MCAST_JOIN_GROUP, request);
}

bool setMulticastInterface(SocketHandle socket, bool isIpv6, unsigned index) noexcept {
    if (isIpv6) return setOption(socket, IPPROTO_IPV6, IPV6_MULTICAST_IF, DWORD{index});
    // An address 0.x.x.x stands for an index.
    return setOption(socket, IPPROTO_IP, IP_MULTICAST_IF, htonl(index));
}

}  // namespace platform
