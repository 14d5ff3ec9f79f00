#pragma once

#include <array>

#include <asio/io_context.hpp>

#include "host/io/datagram.h"
#include "host/net/packet_writer.h"
#include "host/net/udp_sockets.h"

namespace mvrtpfec {

/// Where the three streams go: media to a port, FECA two above, FECB four.
class StreamWriters {
public:
    /// Throws UsageError for a port without room above, std::system_error.
    StreamWriters(const asio::ip::udp::endpoint& media, const SendingOptions& options);

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

/// The endpoint of a stream by that of the media. Throws UsageError when the port has no room above.
asio::ip::udp::endpoint endpointOf(StreamPort port, const asio::ip::udp::endpoint& media);

}  // namespace mvrtpfec
