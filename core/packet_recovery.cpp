#include "core/packet_recovery.h"

#include <cstring>

#include "core/xor_bytes.h"

namespace mvrtpfec {

namespace {

/// Calls visit(packet) for every other member in order, null for one that is absent, until it returns false.
template <class Visit>
bool visitOthers(std::uint16_t missing, const ProtectedRange& range, const CMediaPacketStore& store,
                 Visit visit) {
    for (std::uint32_t n = range.base; n <= range.last; n += range.offset) {
        if (n != missing && !visit(store.find(static_cast<std::uint16_t>(n)))) return false;
    }
    return true;
}

/// A copy of the FEC packet with the recovery fields where a media packet has them. The sixteen bytes
/// by which an FEC packet is longer stay at its end; the final length cuts them off.
std::unique_ptr<RtpPacket> seed(std::uint16_t missing, ConstRtpPacketView fec) {
    auto candidate = std::make_unique<RtpPacket>(fec.data, fec.length);
    std::uint8_t* out = candidate->view.data;
    const auto payloadType =
        static_cast<std::uint8_t>(fec.data[fec_header::payloadTypeRecovery] & payloadTypeBits);

    candidate->view.length = readBigEndian16(fec.data + fec_header::lengthRecovery);
    out[0] = static_cast<std::uint8_t>(versionTwo | (fec.data[0] & paddingBit));
    out[1] = static_cast<std::uint8_t>((fec.data[1] & markerBit) | payloadType);
    writeBigEndian16(out + 2, missing);
    std::memcpy(out + 4, fec.data + fec_header::timestampRecovery, 4);
    writeBigEndian32(out + 8, 0);
    std::memcpy(out + payloadOffsetOf(payloadType), fec.data + fecPayloadOffset,
                fec.length - fecPayloadOffset);
    return candidate;
}

/// Takes one packet of the group out of the parity; false when it doesn't fit.
bool combine(RtpPacket& candidate, ConstRtpPacketView packet) {
    std::uint8_t* out = candidate.view.data;
    candidate.view.length ^= packet.length;
    out[0] ^= packet.data[0] & paddingBit;
    out[1] ^= packet.data[1];
    xorBytes(out + 4, packet.data + 4, 4);
    std::memcpy(out + 8, packet.data + 8, 4);

    // Both offsets follow the payload types as they stand here, in the middle of the walk too.
    const std::size_t target = payloadOffsetOf(out[1] & payloadTypeBits);
    const std::size_t count = packet.payloadLength();
    if (target + count > candidate.bufferSize()) return false;
    xorBytes(out + target, packet.payload(), count);
    return true;
}

}  // namespace

std::unique_ptr<RtpPacket> RecoverPacket(std::uint16_t missing, ConstRtpPacketView fec,
                                         const ProtectedRange& range, const CMediaPacketStore& store) {
    if (range.offset == 0) return nullptr;
    // Most attempts end here, so nothing is copied before all the others are seen.
    if (!visitOthers(missing, range, store, [](const RtpPacket* packet) { return packet != nullptr; }))
        return nullptr;

    std::unique_ptr<RtpPacket> candidate = seed(missing, fec);
    const bool fits = visitOthers(missing, range, store,
                                  [&](const RtpPacket* packet) { return combine(*candidate, packet->view); });
    if (!fits || !candidate->isValid()) return nullptr;
    candidate->resize(candidate->view.length);
    return candidate;
}

}  // namespace mvrtpfec
