#include "tests/host/udp_replay-posix.h"

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

#include <arpa/inet.h>
#include <fmt/format.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace mvrtpfec {

namespace {

sockaddr_in addressOf(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

bool isFree(std::uint16_t port) {
    const int trial = socket(AF_INET, SOCK_DGRAM, 0);
    const sockaddr_in address = addressOf(port);
    const int result = bind(trial, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    close(trial);
    return result == 0;
}

std::uint16_t freePort() {
    constexpr std::uint16_t first = 20000;
    constexpr std::uint16_t end = 30000;
    // Tests that run beside this one begin elsewhere.
    for (int i = 0; i < end - first; i += 2) {
        const auto port = static_cast<std::uint16_t>(first + (getpid() * 8 + i) % (end - first));
        if (isFree(port) && isFree(static_cast<std::uint16_t>(port + 1))) return port;
    }
    throw std::runtime_error("no UDP port is free");
}

}  // namespace

UdpReplay::UdpReplay() : socket_(socket(AF_INET, SOCK_DGRAM, 0)), port_(freePort()) {}

UdpReplay::~UdpReplay() {
    close(socket_);
}

bool UdpReplay::waitForListener() const {
    const std::string mark = fmt::format(":{:04X} ", port_);
    for (int i = 0; i < 1000; ++i) {
        for (const char* table : {"/proc/net/udp", "/proc/net/udp6"}) {
            std::ifstream lines(table);
            for (std::string line; std::getline(lines, line);)
                if (line.find(mark) != std::string::npos) return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

void UdpReplay::send(const std::vector<Datagram>& packets) const {
    const sockaddr_in address = addressOf(port_);
    for (const Datagram& packet : packets) {
        sendto(socket_, packet.payload.data(), packet.payload.size(), 0,
               reinterpret_cast<const sockaddr*>(&address), sizeof address);
        std::this_thread::sleep_for(std::chrono::microseconds(300));
    }
}

}  // namespace mvrtpfec
