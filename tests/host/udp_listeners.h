#pragma once

#include <cstdint>
#include <stdexcept>
#include <system_error>
#include <vector>

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>

#include "tests/host/io_test_files.h"

namespace mvrtpfec {

/// Sockets on ports of this machine one behind the other, the first even.
class UdpListeners {
public:
    explicit UdpListeners(std::size_t count) {
        for (std::uint16_t port = 30000; port < 40000; port = static_cast<std::uint16_t>(port + 2 * count)) {
            try {
                sockets_.clear();
                for (std::size_t i = 0; i < count; ++i)
                    sockets_.emplace_back(context_,
                                          asio::ip::udp::endpoint(asio::ip::address_v4::loopback(),
                                                                  static_cast<std::uint16_t>(port + i)));
                first_ = port;
                return;
            } catch (const std::system_error&) {
                continue;
            }
        }
        throw std::runtime_error("no UDP ports are free");
    }

    std::uint16_t firstPort() const { return first_; }

    /// What has come to one of them.
    std::vector<Bytes> datagrams(std::size_t index) {
        std::vector<Bytes> all;
        asio::ip::udp::socket& socket = sockets_.at(index);
        while (socket.available() > 0) {
            Bytes bytes(socket.available());
            bytes.resize(socket.receive(asio::buffer(bytes)));
            all.push_back(bytes);
        }
        return all;
    }

private:
    asio::io_context context_;
    std::vector<asio::ip::udp::socket> sockets_;
    std::uint16_t first_ = 0;
};

}  // namespace mvrtpfec
