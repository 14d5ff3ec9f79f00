#pragma once

#include <atomic>
#include <deque>
#include <memory>

#include "rtp_media/chain/rtp_media_packet.h"

namespace mvrtpfec {

/// Packets on their way from a parser's thread to the sender's. Adding takes no lock and never waits;
/// everything else is the sender's alone.
class PacketQueue : NonCopyable {
public:
    ~PacketQueue() { clear(); }

    /// Any thread.
    void append(std::unique_ptr<RTPMediaPacket> packet);

    /// The first packet, in the order of append; null when there is none.
    RTPMediaPacket* front();
    void popFront() { ordered_.pop_front(); }
    void clear();

private:
    struct Arrival {
        std::unique_ptr<RTPMediaPacket> packet;
        Arrival* before;
    };

    void takeArrivals();

    std::atomic<Arrival*> newest_{nullptr};
    std::deque<std::unique_ptr<RTPMediaPacket>> ordered_;
};

}  // namespace mvrtpfec
