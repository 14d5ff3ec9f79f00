#include "bench/packet_ring.h"

#include <random>

namespace mvrtpfec::bench {

PacketRing::PacketRing(std::size_t bytes) : count_(bytes / mediaSize), bytes_(count_ * mediaSize) {
    std::mt19937 random(1);
    for (std::uint8_t& byte : bytes_) byte = static_cast<std::uint8_t>(random());
    for (std::size_t i = 0; i < count_; ++i) {
        std::uint8_t* packet = at(i);
        packet[0] = versionTwo;
        packet[1] = mediaPayloadType;
        writeBigEndian16(packet + 2, static_cast<std::uint16_t>(i));
        writeBigEndian32(packet + 8, 0x4d565254);
    }
}

}  // namespace mvrtpfec::bench
