#include "host/net/udp_sockets.h"

#include <system_error>

#include <asio/ip/multicast.hpp>
#include <asio/ip/unicast.hpp>

#include "host/usage_error.h"
#include "platform/net/multicast.h"
#include "platform/net/socket.h"

namespace mvrtpfec {

namespace {

using Udp = asio::ip::udp;

/// What holds a second of 30 Mbit/s; the system may grant less.
constexpr int receiveBuffer = 8 << 20;
constexpr int sendBuffer = 4 << 20;

unsigned indexOf(const std::string& name) {
    if (name.empty()) return 0;
    const unsigned index = platform::interfaceIndex(name.c_str());
    if (index == 0) throw UsageError(name + ": there is no such network interface");
    return index;
}

platform::SocketHandle handleOf(Udp::socket& socket) {
    return static_cast<platform::SocketHandle>(socket.native_handle());
}

[[noreturn]] void throwSystemError(const std::string& what) {
    throw std::system_error(platform::lastSocketError(), what);
}

/// Link-local addresses are those of an interface (RFC 4007, section 6).
Udp::endpoint scoped(Udp::endpoint endpoint, unsigned index) {
    if (!endpoint.address().is_v6() || index == 0) return endpoint;
    asio::ip::address_v6 address = endpoint.address().to_v6();
    if (address.is_link_local() || address.is_multicast_link_local()) address.scope_id(index);
    endpoint.address(address);
    return endpoint;
}

std::string textOf(const Udp::endpoint& endpoint) {
    return endpoint.address().to_string() + " port " + std::to_string(endpoint.port());
}

void join(Udp::socket& socket, const Udp::endpoint& group, const ReceivingOptions& options) {
    std::optional<Udp::endpoint> source;
    if (options.source) {
        if (options.source->is_v6() != group.address().is_v6())
            throw UsageError(options.source->to_string() + ": is of another family than the group");
        source.emplace(*options.source, 0);
    }
    const platform::SocketAddress from =
        source ? platform::SocketAddress{source->data(), source->size()} : platform::SocketAddress{};
    if (!platform::joinGroup(handleOf(socket), {group.data(), group.size()}, from,
                             indexOf(options.interfaceName))) {
        const std::error_code reason = platform::lastSocketError();
        throw std::system_error(reason, "can't join " + group.address().to_string());
    }
}

}  // namespace

Udp::socket openReceiver(asio::io_context& context, const Udp::endpoint& address,
                         const ReceivingOptions& options) {
    const Udp::endpoint local = scoped(address, indexOf(options.interfaceName));
    const bool isGroup = local.address().is_multicast();
    if (!isGroup && options.source) throw UsageError("a source can be chosen of a group alone");
    Udp::socket socket(context, local.protocol());
    platform::setReceiveBuffer(handleOf(socket), receiveBuffer);
    if (isGroup) socket.set_option(asio::socket_base::reuse_address(true));
    asio::error_code error;
    socket.bind(isGroup && !platform::canBindToGroup ? Udp::endpoint(local.protocol(), local.port()) : local,
                error);
    if (error) throw std::system_error(error, "can't receive on " + textOf(local));
    if (isGroup) join(socket, local, options);
    socket.non_blocking(true);
    return socket;
}

Udp::socket openSender(asio::io_context& context, const Udp::endpoint& address,
                       const SendingOptions& options) {
    const unsigned index = indexOf(options.interfaceName);
    const Udp::endpoint target = scoped(address, index);
    const bool isIpv6 = target.address().is_v6();
    Udp::socket socket(context, target.protocol());
    asio::error_code ignored;
    socket.set_option(asio::socket_base::send_buffer_size(sendBuffer), ignored);
    if (options.sourcePort != 0) socket.bind({target.protocol(), options.sourcePort});
    if (options.ttl) {
        socket.set_option(asio::ip::multicast::hops(*options.ttl));
        socket.set_option(asio::ip::unicast::hops(*options.ttl));
    }
    if (index != 0 && target.address().is_multicast() &&
        !platform::setMulticastInterface(handleOf(socket), isIpv6, index))
        throwSystemError("can't send on " + options.interfaceName);
    if (options.dscp != 0 && !platform::setTrafficClass(handleOf(socket), isIpv6, options.dscp << 2))
        throwSystemError("can't mark what is sent");
    asio::error_code error;
    socket.connect(target, error);
    if (error) throw std::system_error(error, "can't send to " + textOf(target));
    return socket;
}

}  // namespace mvrtpfec
