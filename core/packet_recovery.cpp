#include "core/packet_recovery.h"

#include <algorithm>
#include <array>
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

/// What headers alone tell of the packet to be: its first two bytes and its length.
struct HeaderParity {
    std::array<std::uint8_t, 2> bytes;
    std::uint16_t length;

    explicit HeaderParity(ConstRtpPacketView fec)
        : bytes{static_cast<std::uint8_t>(versionTwo | (fec.data[0] & paddingBit)),
                static_cast<std::uint8_t>((fec.data[1] & markerBit) |
                                          (fec.data[fec_header::payloadTypeRecovery] & payloadTypeBits))},
          length(readBigEndian16(fec.data + fec_header::lengthRecovery)) {}

    void add(ConstRtpPacketView packet) {
        bytes[0] ^= packet.data[0] & paddingBit;
        bytes[1] ^= packet.data[1];
        length ^= packet.length;
    }
    /// Where the payload begins, by the payload type as it stands in the middle of the walk.
    std::size_t payloadOffset() const { return payloadOffsetOf(bytes[1] & payloadTypeBits); }
    bool isValid() const { return ConstRtpPacketView{bytes.data(), length}.isValid(); }
};

/// Most attempts end here: no byte of payload is touched before all the others are seen to be there, to
/// fit, and to give a valid packet.
bool canRecover(std::uint16_t missing, ConstRtpPacketView fec, const ProtectedRange& range,
                const CMediaPacketStore& store) {
    HeaderParity header(fec);
    const bool complete = visitOthers(missing, range, store, [&](const RtpPacket* packet) {
        if (packet == nullptr) return false;
        header.add(packet->view);
        return header.payloadOffset() + packet->view.payloadLength() <= fec.length;
    });
    return complete && header.isValid();
}

}  // namespace

std::unique_ptr<RtpPacket> RecoverPacket(std::uint16_t missing, ConstRtpPacketView fec,
                                         const ProtectedRange& range, const CMediaPacketStore& store) {
    if (range.offset == 0 || !canRecover(missing, fec, range, store)) return nullptr;

    // The sixteen bytes by which an FEC packet is longer stay at the end; the final length cuts them off.
    auto candidate = std::make_unique<RtpPacket>(fec.data, fec.length);
    std::uint8_t* out = candidate->view.data;
    HeaderParity header(fec);
    writeBigEndian16(out + 2, missing);
    std::memcpy(out + 4, fec.data + fec_header::timestampRecovery, 4);
    writeBigEndian32(out + 8, 0);
    std::memcpy(out + header.payloadOffset(), fec.data + fecPayloadOffset, fec.length - fecPayloadOffset);

    visitOthers(missing, range, store, [&](const RtpPacket* other) {
        const ConstRtpPacketView packet = other->view;
        header.add(packet);
        xorBytes(out + 4, packet.data + 4, 4);
        std::memcpy(out + 8, packet.data + 8, 4);
        xorBytes(out + header.payloadOffset(), packet.payload(), packet.payloadLength());
        return true;
    });
    std::copy(header.bytes.begin(), header.bytes.end(), out);
    candidate->resize(header.length);
    candidate->view.length = header.length;
    return candidate;
}

}  // namespace mvrtpfec
