#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>

#include "core/rtp_packet.h"
#include "host/io/datagram.h"
#include "host/live/stream_endpoints.h"
#include "host/net/packet_reader.h"
#include "host/net/udp_sockets.h"

namespace mvrtpfec {

/// The three ports of a protected stream, read on one thread.
class StreamReaders {
public:
    using Taker = std::function<void(StreamPort, std::unique_ptr<RtpPacket>)>;

    /// Throws UsageError, std::system_error.
    StreamReaders(const StreamEndpoints& streams, const ReceivingOptions& options, Taker take);

    /// Gives out what comes meanwhile.
    void runFor(std::chrono::milliseconds time);

    /// Datagrams longer than any packet, left out.
    std::uint64_t tooLong() const noexcept { return reader_.tooLong(); }
    /// Datagrams that the system dropped because they were not read in time, as far as it tells.
    std::uint64_t overrun();

private:
    void readNext(StreamPort port);

    Taker take_;
    asio::io_context context_;
    std::array<asio::ip::udp::socket, 3> sockets_;
    PacketReader reader_;
    std::array<std::uint32_t, 3> dropped_{};
    std::uint64_t overrun_ = 0;
};

}  // namespace mvrtpfec
