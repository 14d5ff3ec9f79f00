#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/rtp_packet.h"

namespace mvrtpfec::bench {

/// What happens to a stream on its way to the receiver.
enum class Loss { none, onePercent, fivePercent, bursts };

/// The packets of a protected stream as they arrive, one behind the other in memory: media and both FEC
/// streams, lost ones left out. At most one cycle of sequence numbers, so that every turn is a stream of its
/// own unless advance() makes it go on.
class Arrivals {
public:
    enum class Stream : std::uint8_t { media, columnFec, rowFec };
    struct Packet {
        std::size_t at;
        std::uint16_t length;
        Stream stream;
    };

    /// `ring` is the size in bytes of the media to make, of which there is ten windows' worth at least.
    Arrivals(std::int32_t columns, std::int32_t rows, Loss loss, std::size_t ring);

    /// Media packets sent.
    std::size_t mediaCount() const { return mediaCount_; }
    const std::vector<Packet>& packets() const { return packets_; }
    std::uint8_t* bytesOf(const Packet& packet) { return &bytes_[packet.at]; }

    /// A packet's bytes; the one four ahead is asked for meanwhile.
    std::uint8_t* prefetched(std::size_t index) {
        const Packet& ahead = packets_[(index + 4) % packets_.size()];
        for (std::size_t i = 0; i < ahead.length; i += 64) __builtin_prefetch(&bytes_[ahead.at + i]);
        return bytesOf(packets_[index]);
    }

    /// Numbers a packet as that of the next turn.
    void advance(const Packet& packet);

private:
    void add(ConstRtpPacketView packet, Stream stream);

    std::vector<std::uint8_t> bytes_;
    std::vector<Packet> packets_;
    std::size_t mediaCount_ = 0;
    std::array<std::uint16_t, 3> counts_{};  ///< packets sent of each stream
};

}  // namespace mvrtpfec::bench
