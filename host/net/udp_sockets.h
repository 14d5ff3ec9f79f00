#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <asio/io_context.hpp>
#include <asio/ip/address.hpp>
#include <asio/ip/udp.hpp>

namespace mvrtpfec {

struct ReceivingOptions {
    std::string interfaceName;  ///< by name or number, for groups; empty for the system's choice
    std::optional<asio::ip::address> source;  ///< of a source-specific group (RFC 4607)
};

struct SendingOptions {
    std::string interfaceName;
    std::optional<int> ttl;  ///< hops, of unicast and of groups
    std::uint16_t sourcePort = 0;
    int dscp = 0;  ///< RFC 2474
};

/// A non-blocking socket on a local address, or in a group. Several programs may share a group's port. Throws
/// UsageError for what can't be meant, std::system_error.
asio::ip::udp::socket openReceiver(asio::io_context& context, const asio::ip::udp::endpoint& address,
                                   const ReceivingOptions& options);

/// A socket connected to where its datagrams go. Throws as openReceiver.
asio::ip::udp::socket openSender(asio::io_context& context, const asio::ip::udp::endpoint& address,
                                 const SendingOptions& options);

}  // namespace mvrtpfec
