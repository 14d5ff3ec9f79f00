#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <asio/ip/udp.hpp>

namespace mvrtpfec {

/// "ADDR:PORT" with an IPv4 address or, in brackets, an IPv6 one, and a port from 1 on. Throws UsageError.
asio::ip::udp::endpoint parseEndpoint(const std::string& text);

/// A port from 1 on, which is part of `whole`. Throws UsageError.
std::uint16_t parsePort(std::string_view text, const std::string& whole);

}  // namespace mvrtpfec
