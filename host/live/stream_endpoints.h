#pragma once

#include <array>
#include <string>

#include <asio/ip/udp.hpp>

#include "host/io/datagram.h"

namespace mvrtpfec {

/// Where the three streams of a protected one go or come to, by StreamPort.
using StreamEndpoints = std::array<asio::ip::udp::endpoint, 3>;

/// "ADDR:PORT" for media, with FECA two ports above and FECB four, or "ADDR:PORT,FECA,FECB" with ports of
/// their own. Throws UsageError.
StreamEndpoints parseStream(const std::string& text);

}  // namespace mvrtpfec
