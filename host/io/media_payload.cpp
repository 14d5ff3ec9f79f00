#include "host/io/media_payload.h"

#include "core/rtp_packet.h"

namespace mvrtpfec {

std::span<const std::uint8_t> mediaPayload(std::span<const std::uint8_t> packet) {
    constexpr std::uint8_t extensionBit = 0x10;
    constexpr std::uint8_t csrcCountBits = 0x0f;
    if (packet.size() < rtpHeaderSize) return {};
    std::size_t begin = rtpHeaderSize + std::size_t{4} * (packet[0] & csrcCountBits);
    if ((packet[0] & extensionBit) != 0) {
        if (begin + 4 > packet.size()) return {};
        begin += 4 + std::size_t{4} * readBigEndian16(&packet[begin + 2]);
    }
    const std::size_t padding = (packet[0] & paddingBit) != 0 ? packet.back() : 0;
    if (begin + padding > packet.size()) return {};
    return packet.subspan(begin, packet.size() - padding - begin);
}

}  // namespace mvrtpfec
