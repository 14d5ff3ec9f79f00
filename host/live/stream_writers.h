#pragma once

#include <array>

#include <asio/io_context.hpp>

#include "host/io/datagram.h"
#include "host/live/stream_endpoints.h"
#include "host/net/packet_writer.h"
#include "host/net/udp_sockets.h"

namespace mvrtpfec {

/// Sends the three streams.
class StreamWriters {
public:
    /// Throws UsageError, std::system_error.
    StreamWriters(const StreamEndpoints& streams, const SendingOptions& options);

    PacketWriter& of(StreamPort port) { return writers_[static_cast<std::size_t>(port)]; }
    const PacketWriter& of(StreamPort port) const { return writers_[static_cast<std::size_t>(port)]; }
    void flush() {
        for (PacketWriter& writer : writers_) writer.flush();
    }
    std::uint64_t refused() const;

private:
    asio::io_context context_;
    std::array<PacketWriter, 3> writers_;
};

}  // namespace mvrtpfec
