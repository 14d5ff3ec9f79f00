#pragma once

#include <array>
#include <cstdint>

#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>

namespace mvrtpfec::bench {

/// Takes the three ports of a stream on this machine and reads nothing, so that what is sent there is dropped
/// without an answer.
class SilentSockets {
public:
    explicit SilentSockets(std::uint16_t port)
        : sockets_{open(port), open(static_cast<std::uint16_t>(port + 2)),
                   open(static_cast<std::uint16_t>(port + 4))} {}

private:
    asio::ip::udp::socket open(std::uint16_t port) {
        return {context_, {asio::ip::address_v4::loopback(), port}};
    }

    asio::io_context context_;
    std::array<asio::ip::udp::socket, 3> sockets_;
};

}  // namespace mvrtpfec::bench
