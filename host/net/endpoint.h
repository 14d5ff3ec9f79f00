#pragma once

#include <string>

#include <asio/ip/udp.hpp>

namespace mvrtpfec {

/// "ADDR:PORT" with an IPv4 address or, in brackets, an IPv6 one, and a port from 1 on. Throws UsageError.
asio::ip::udp::endpoint parseEndpoint(const std::string& text);

}  // namespace mvrtpfec
