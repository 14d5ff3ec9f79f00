#include "host/net/own_address.h"

#include <string>

#include <asio/io_context.hpp>

#include "host/usage_error.h"

namespace mvrtpfec {

namespace {

using Udp = asio::ip::udp;

/// One's own addresses are those that can be bound to. Sent to, the unspecified one means this host.
bool isOwn(const asio::ip::address& address) {
    if (address.is_multicast()) return false;
    asio::io_context context;
    asio::error_code error;
    Udp::socket socket(context);
    socket.open(address.is_v6() ? Udp::v6() : Udp::v4(), error);
    if (!error) socket.bind({address, 0}, error);
    return !error;
}

bool comesTo(const asio::ip::address& target, const asio::ip::address& source) {
    if (target == source) return true;
    if (source.is_unspecified()) return (source.is_v6() || target.is_v4()) && isOwn(target);
    return target.is_unspecified() && source.is_loopback() && target.is_v6() == source.is_v6();
}

}  // namespace

void requireElsewhere(std::span<const Udp::endpoint> targets, std::span<const Udp::endpoint> sources) {
    for (const Udp::endpoint& target : targets) {
        for (const Udp::endpoint& source : sources) {
            if (target.port() == source.port() && comesTo(target.address(), source.address()))
                throw UsageError("what goes to port " + std::to_string(target.port()) + " of " +
                                 target.address().to_string() +
                                 " would come back: the stream is taken from there");
        }
    }
}

}  // namespace mvrtpfec
