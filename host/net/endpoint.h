#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <asio/ip/udp.hpp>

namespace mvrtpfec {

/// "ADDR:PORT" with an IPv4 address, a host's name or, in brackets, an IPv6 address, and a port from 1 on.
/// Throws UsageError, std::runtime_error when names can't be looked up at the moment.
asio::ip::udp::endpoint parseEndpoint(const std::string& text);

/// What "udp://ADDR:PORT" and "rtp://ADDR:PORT" name; nothing for what is no address of
/// this kind. Throws as parseEndpoint, for other schemes too.
std::optional<asio::ip::udp::endpoint> parseNetworkName(const std::string& text);

/// An address, or that of a host by its name: an IPv4 one if it has one. Throws as parseEndpoint, with a
/// message that begins with `whole`.
asio::ip::address resolveHost(const std::string& host, const std::string& whole);

/// A port from 1 on, which is part of `whole`. Throws UsageError.
std::uint16_t parsePort(std::string_view text, const std::string& whole);

}  // namespace mvrtpfec
