#pragma once

#include "core/fec_packet.h"
#include "core/rtp_packet.h"
#include "tests/shared/bytes.h"
#include "tests/shared/random.h"

namespace mvrtpfec {

/// A media packet whose payload, timestamp and marker follow from its number, so that no two are alike.
Bytes mediaPacket(std::uint16_t sequenceNumber, std::size_t length = 200);
std::vector<Bytes> mediaPackets(std::uint16_t first, std::size_t count);

/// The same with nothing but its number and length foreseeable. `length` is at least 12.
Bytes randomMediaPacket(Random& random, std::uint16_t sequenceNumber, std::size_t length);

/// The FEC packet over the given media packets, which lie `offset` numbers apart.
Bytes fecPacketOver(const std::vector<Bytes>& media, FecKind kind, std::uint8_t offset,
                    std::uint16_t sequenceNumber = 0);

/// An FEC packet of random payload that names a group.
Bytes fecPacketNaming(std::uint16_t base, FecKind kind, std::uint8_t offset, std::uint8_t count,
                      std::size_t length = 60);

std::uint16_t numberOf(const Bytes& packet);
std::vector<std::uint16_t> numbersOf(const std::vector<Bytes>& packets);

inline ConstRtpPacketView viewOf(const Bytes& bytes) {
    return {bytes.data(), static_cast<std::uint16_t>(bytes.size())};
}
inline Bytes bytesOf(ConstRtpPacketView view) {
    return Bytes(view.data, view.data + view.length);
}

}  // namespace mvrtpfec
