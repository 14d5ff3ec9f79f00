#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>

#include <asio/ip/udp.hpp>

#include "core/rtp_packet.h"

namespace mvrtpfec {

/// Takes datagrams off a socket in batches, each straight into a packet of its own. One thread.
class PacketReader {
public:
    using Taker = std::function<void(std::unique_ptr<RtpPacket>)>;

    PacketReader();

    /// Everything that waits at a non-blocking socket, for up to a few batches so that others get their turn.
    /// Datagrams longer than any packet are counted and left out; the others may be anything. How many came.
    std::size_t readWaiting(asio::ip::udp::socket& socket, const Taker& take);

    std::uint64_t tooLong() const noexcept { return tooLong_; }

private:
    static constexpr std::size_t batch = 64;

    std::size_t readBatch(asio::ip::udp::socket& socket, const Taker& take);

    std::array<std::unique_ptr<RtpPacket>, batch> packets_;
    std::uint64_t tooLong_ = 0;
};

}  // namespace mvrtpfec
