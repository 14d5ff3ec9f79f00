#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include <asio/ip/udp.hpp>

namespace mvrtpfec {

/// Takes datagrams of any size off a socket in batches. One thread.
class DatagramReader {
public:
    using Taker = std::function<void(std::span<const std::uint8_t>)>;

    DatagramReader();

    /// What waits at a non-blocking socket, up to one batch of it.
    void readWaiting(asio::ip::udp::socket& socket, const Taker& take);

private:
    std::vector<std::uint8_t> room_;
};

}  // namespace mvrtpfec
