#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "host/io/datagram.h"

namespace mvrtpfec {

/// Sends RTP packets to a port of this machine, as their source would.
class UdpReplay {
public:
    UdpReplay();
    ~UdpReplay();
    UdpReplay(const UdpReplay&) = delete;
    UdpReplay& operator=(const UdpReplay&) = delete;

    /// An even port that is free, and the next one too.
    std::uint16_t port() const { return port_; }

    /// Waits until somebody listens on the port; false after ten seconds.
    bool waitForListener() const;
    /// Slowly enough for a reader with small buffers.
    void send(const std::vector<Datagram>& packets) const;

private:
    int socket_;
    std::uint16_t port_;
};

}  // namespace mvrtpfec
