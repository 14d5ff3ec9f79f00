#include "tests/shared/packets.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "core/big_endian.h"

namespace mvrtpfec {

Bytes mediaPacket(std::uint16_t sequenceNumber, std::size_t length) {
    Random random(sequenceNumber);
    Bytes packet = randomMediaPacket(random, sequenceNumber, length);
    writeBigEndian32(packet.data() + 8, 0xcafe0000u + sequenceNumber);
    return packet;
}

std::vector<Bytes> mediaPackets(std::uint16_t first, std::size_t count) {
    std::vector<Bytes> packets;
    for (std::size_t n = 0; n < count; ++n)
        packets.push_back(mediaPacket(static_cast<std::uint16_t>(first + n)));
    return packets;
}

Bytes randomMediaPacket(Random& random, std::uint16_t sequenceNumber, std::size_t length) {
    Bytes packet(length + sizeof(std::uint64_t));
    for (std::size_t i = 0; i < length; i += sizeof(std::uint64_t)) {
        const std::uint64_t word = random.bits();
        std::memcpy(&packet[i], &word, sizeof word);
    }
    packet.resize(length);
    packet[0] = versionTwo;
    packet[1] = static_cast<std::uint8_t>((packet[1] & markerBit) | mediaPayloadType);
    writeBigEndian16(packet.data() + 2, sequenceNumber);
    return packet;
}

Bytes fecPacketOver(const std::vector<Bytes>& media, FecKind kind, std::uint8_t offset,
                    std::uint16_t sequenceNumber) {
    RtpPacket fec;
    startFecPacket(fec, viewOf(media.front()), kind, offset, static_cast<std::uint8_t>(media.size()));
    std::for_each(std::next(media.begin()), media.end(),
                  [&](const Bytes& packet) { addToFecPacket(fec, viewOf(packet)); });
    writeBigEndian16(fec.view.data + 2, sequenceNumber);
    return bytesOf(fec.view);
}

Bytes fecPacketNaming(std::uint16_t base, FecKind kind, std::uint8_t offset, std::uint8_t count,
                      std::size_t length) {
    Bytes packet = mediaPacket(base, length);
    packet[1] = fecPayloadType;
    writeBigEndian16(packet.data() + fec_header::snBase, base);
    packet[fec_header::direction] = kind == FecKind::row ? fec_header::rowFlag : 0;
    packet[fec_header::offset] = offset;
    packet[fec_header::protectedCount] = count;
    return packet;
}

std::uint16_t numberOf(const Bytes& packet) {
    return readBigEndian16(packet.data() + 2);
}

std::vector<std::uint16_t> numbersOf(const std::vector<Bytes>& packets) {
    std::vector<std::uint16_t> numbers;
    std::ranges::transform(packets, std::back_inserter(numbers), numberOf);
    return numbers;
}

}  // namespace mvrtpfec
