#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/rtp_packet.h"

namespace mvrtpfec::bench {

inline constexpr std::size_t mediaSize = 1328;
inline constexpr std::size_t payloadSize = mediaSize - rtpHeaderSize;

/// Sizes in bytes of the rings that media is streamed from: far beyond the caches, and inside them.
inline constexpr std::size_t coldRing = std::size_t{64} << 20;
inline constexpr std::size_t hotRing = std::size_t{256} << 10;

/// Media packets of random payload, one behind the other, that a benchmark goes round and round.
class PacketRing {
public:
    explicit PacketRing(std::size_t bytes);

    std::size_t count() const { return count_; }

    /// The next packet; the one four ahead is asked for meanwhile.
    RtpPacketView next() {
        prefetch(at((position_ + 4) % count_));
        return nextUnasked();
    }
    /// The next packet for one who reads no more than its header.
    RtpPacketView nextUnasked() {
        const RtpPacketView packet{at(position_), mediaSize};
        position_ = (position_ + 1) % count_;
        return packet;
    }

private:
    std::uint8_t* at(std::size_t index) { return bytes_.data() + index * mediaSize; }
    static void prefetch(const std::uint8_t* packet) {
        for (std::size_t i = 0; i < mediaSize; i += 64) __builtin_prefetch(packet + i);
    }

    std::size_t count_;
    std::size_t position_ = 0;
    std::vector<std::uint8_t> bytes_;
};

}  // namespace mvrtpfec::bench
