#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <vector>

#include <asio/ip/udp.hpp>

#include "platform/net/datagrams.h"

namespace mvrtpfec {

/// Sends datagrams over a connected socket, gathered into batches. One thread. What can't leave is lost and
/// counted, as it would be on its way.
class PacketWriter {
public:
    explicit PacketWriter(asio::ip::udp::socket socket);

    /// Copies; leaves with the next flush, or when a batch is full.
    void write(std::span<const std::uint8_t> bytes);
    void flush();

    std::uint64_t packets() const noexcept { return packets_; }
    std::uint64_t bytes() const noexcept { return bytes_; }
    /// Any thread.
    std::uint64_t refused() const noexcept { return refused_; }

private:
    asio::ip::udp::socket socket_;
    std::vector<std::uint8_t> storage_;
    std::vector<platform::DatagramBuffer> waiting_;
    std::uint64_t packets_ = 0;
    std::uint64_t bytes_ = 0;
    std::atomic<std::uint64_t> refused_{0};
};

}  // namespace mvrtpfec
