#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include "core/rtp_packet.h"

namespace mvrtpfec {

/// The media packets sent last, to hold delivered ones against. Packets are sent and delivered on two
/// threads; the results are read when both have ended.
class SentHistory {
public:
    SentHistory() : slots_(size) {}

    void add(ConstRtpPacketView sent);
    void check(ConstRtpPacketView delivered);

    std::uint64_t sent() const { return sent_; }
    /// Delivered packets whose bytes differ from what was sent under their number.
    std::uint64_t mismatched() const { return mismatched_; }
    /// Every packet sent was delivered, once, in order, unchanged.
    bool isWhole() const { return inOrder_ && mismatched_ == 0 && checked_ == sent_; }

private:
    /// More than the receiver holds back with any matrix we send, the channel reorders and is in flight.
    static constexpr std::size_t size = 8192;

    struct Slot {
        std::uint64_t place = 0;
        std::vector<std::uint8_t> bytes;
    };

    std::mutex mutex_;
    std::vector<Slot> slots_;
    std::uint64_t sent_ = 0;
    std::uint64_t checked_ = 0;
    std::uint64_t mismatched_ = 0;
    bool inOrder_ = true;
};

}  // namespace mvrtpfec
