#pragma once

#include <string>

#include "platform/net/socket.h"
#include "support/log/log_sink.h"

namespace mvn::log {

/// Lines over a connected socket, a datagram each, as syslog has them: facility 16 (local use 0), severities
/// 3, 4, 6 and 7 of RFC 5424, section 6.2.1. What can't be sent is lost.
class NetworkSink final : public LogSink {
public:
    /// The socket isn't owned.
    NetworkSink(platform::SocketHandle socket, std::string sourceName, std::int32_t maximumLevel,
                std::uint32_t firstCounter = 0);

private:
    void write(const LogRecord& record) override;

    platform::SocketHandle socket_;
    std::string sourceName_;
    std::uint32_t counter_;
};

}  // namespace mvn::log
