#pragma once

#include <cstdint>

#include "core/rtp_packet.h"

namespace mvrtpfec {

/// Byte positions of the FEC header in an FEC packet (SMPTE 2022-1 section 7.3), counted from the
/// first byte of the RTP header.
namespace fec_header {
inline constexpr std::size_t snBase = 12;
inline constexpr std::size_t lengthRecovery = 14;
inline constexpr std::size_t payloadTypeRecovery = 16;  ///< bit 7 is E, always 1
inline constexpr std::size_t mask = 17;
inline constexpr std::size_t timestampRecovery = 20;
inline constexpr std::size_t direction = 24;  ///< bit 6 is D
inline constexpr std::size_t offset = 25;
inline constexpr std::size_t protectedCount = 26;  ///< the NA field
inline constexpr std::size_t snBaseExtension = 27;

inline constexpr std::uint8_t extensionFlag = 0x80;
inline constexpr std::uint8_t rowFlag = 0x40;
}  // namespace fec_header

enum class FecKind : std::uint8_t { column, row };

/// The media packets one FEC packet protects: base, base + offset, ..., last, modulo 65536.
struct ProtectedRange {
    std::uint16_t base = 0;
    std::uint8_t offset = 0;
    std::uint8_t count = 0;  ///< NA
    std::uint16_t last = 0;

    bool contains(std::uint16_t sequenceNumber) const;
};

/// Reads the range from an FEC packet of at least 28 bytes.
ProtectedRange protectedRange(ConstRtpPacketView fec);
/// Reads the D bit of an FEC packet of at least 28 bytes.
FecKind fecKind(ConstRtpPacketView fec);

/// Media packets of 12 to 1400 bytes fit an FEC packet; others can't be protected.
inline bool isProtectable(ConstRtpPacketView media) {
    // A packet that carries payload type 96 is taken for one with an FEC header, here as everywhere.
    return media.length >= rtpHeaderSize && media.length <= maxMediaPacketSize &&
           media.length >= media.payloadOffset();
}

/// Writes all of `fec`, a buffer of 1416 bytes: the FEC packet of its first protected packet, with sequence
/// number 0 and zeros behind its end. `media` must be protectable. Unlike SMPTE 2022-1 the RTP header bears
/// the parity of P and M, SSRC 0 and the first packet's timestamp, and a row's offset is 1.
void startFecPacket(RtpPacket& fec, ConstRtpPacketView media, FecKind kind, std::uint8_t offset,
                    std::uint8_t count);

/// Folds one more protectable media packet into what startFecPacket made. Length recovery is, on purpose, the
/// parity of whole packet lengths; the payload grows to the longest, shorter ones counting as extended with
/// zeros.
void addToFecPacket(RtpPacket& fec, ConstRtpPacketView media);
/// The same for two FEC packets in one pass over the payload.
void addToFecPackets(RtpPacket& first, RtpPacket& second, ConstRtpPacketView media);

}  // namespace mvrtpfec
