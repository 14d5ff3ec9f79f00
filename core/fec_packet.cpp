#include "core/fec_packet.h"

#include <algorithm>
#include <cstring>

#include "core/xor_bytes.h"

namespace mvrtpfec {

bool ProtectedRange::contains(std::uint16_t sequenceNumber) const {
    const auto distance = static_cast<std::uint16_t>(sequenceNumber - base);
    if (offset == 0) return distance == 0 && count > 0;
    return distance % offset == 0 && distance / offset < count;
}

ProtectedRange protectedRange(ConstRtpPacketView fec) {
    ProtectedRange range;
    range.base = readBigEndian16(fec.data + fec_header::snBase);
    range.offset = fec.data[fec_header::offset];
    range.count = fec.data[fec_header::protectedCount];
    range.last = static_cast<std::uint16_t>(range.base + (range.count - 1) * range.offset);
    return range;
}

FecKind fecKind(ConstRtpPacketView fec) {
    return (fec.data[fec_header::direction] & fec_header::rowFlag) != 0 ? FecKind::row : FecKind::column;
}

void startFecPacket(RtpPacket& fec, ConstRtpPacketView media, FecKind kind, std::uint8_t offset,
                    std::uint8_t count) {
    using namespace fec_header;
    std::uint8_t* out = fec.view.data;
    fec.view.length = static_cast<std::uint16_t>(media.length + fecHeaderSize);
    const std::size_t payloadEnd = fecPayloadOffset + media.payloadLength();
    std::memset(out, 0, fecPayloadOffset);
    std::memcpy(out + fecPayloadOffset, media.payload(), media.payloadLength());
    std::memset(out + payloadEnd, 0, fec.bufferSize() - payloadEnd);

    out[0] = static_cast<std::uint8_t>(versionTwo | (media.data[0] & paddingBit));
    out[1] = static_cast<std::uint8_t>(fecPayloadType | (media.data[1] & markerBit));
    std::memcpy(out + 4, media.data + 4, 4);

    std::memcpy(out + snBase, media.data + 2, 2);
    writeBigEndian16(out + lengthRecovery, media.length);
    out[payloadTypeRecovery] = static_cast<std::uint8_t>(extensionFlag | media.payloadType());
    std::memcpy(out + timestampRecovery, media.data + 4, 4);
    out[direction] = kind == FecKind::row ? rowFlag : 0;
    out[fec_header::offset] = offset;
    out[protectedCount] = count;
}

namespace {

inline void addHeader(RtpPacket& fec, ConstRtpPacketView media) {
    using namespace fec_header;
    std::uint8_t* out = fec.view.data;
    out[0] ^= media.data[0] & paddingBit;
    out[1] ^= media.data[1] & markerBit;
    out[payloadTypeRecovery] ^= media.payloadType();
    writeBigEndian32(out + timestampRecovery, readBigEndian32(out + timestampRecovery) ^ media.timestamp());
    writeBigEndian16(out + lengthRecovery,
                     static_cast<std::uint16_t>(readBigEndian16(out + lengthRecovery) ^ media.length));
    const auto reach = static_cast<std::uint16_t>(fecPayloadOffset + media.payloadLength());
    fec.view.length = std::max(fec.view.length, reach);
}

}  // namespace

// Beyond its length an FEC packet's buffer is zero, so XOR also copies what reaches past it.

void addToFecPacket(RtpPacket& fec, ConstRtpPacketView media) {
    addHeader(fec, media);
    xorBytes(fec.fecPayload(), media.payload(), media.payloadLength());
}

void addToFecPackets(RtpPacket& first, RtpPacket& second, ConstRtpPacketView media) {
    addHeader(first, media);
    addHeader(second, media);
    xorBytes(first.fecPayload(), second.fecPayload(), media.payload(), media.payloadLength());
}

}  // namespace mvrtpfec
