#pragma once

#include <filesystem>
#include <string>

#include <asio/ip/udp.hpp>

#include "host/media/stream_format.h"

namespace mvrtpfec {

struct NamedStream {
    std::filesystem::path path;
    const StreamFormat* format = nullptr;
};

/// "FILE:FORMAT", or "FILE" with an extension that tells. Throws UsageError, also for a format that can't be
/// packetized.
NamedStream parseStreamName(const std::string& text);

/// "ADDR:PORT" with an IPv4 address and an even port. Throws UsageError.
asio::ip::udp::endpoint parseTarget(const std::string& text);

}  // namespace mvrtpfec
