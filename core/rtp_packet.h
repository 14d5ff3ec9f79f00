#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

#include "core/big_endian.h"

namespace mvrtpfec {

/// Payload types (RFC 3550 section 5.1, RFC 3551 section 6): MPEG-2 transport stream and our FEC.
inline constexpr std::uint8_t mediaPayloadType = 33;
inline constexpr std::uint8_t fecPayloadType = 96;

/// Sizes in bytes, headers included.
inline constexpr std::size_t rtpHeaderSize = 12;
inline constexpr std::size_t fecHeaderSize = 16;
inline constexpr std::size_t fecPayloadOffset = rtpHeaderSize + fecHeaderSize;
inline constexpr std::size_t maxMediaPacketSize = 1400;
inline constexpr std::size_t maxFecPacketSize = maxMediaPacketSize + fecHeaderSize;

/// Bits of the first two header bytes.
inline constexpr std::uint8_t versionTwo = 0x80;
inline constexpr std::uint8_t paddingBit = 0x20;
inline constexpr std::uint8_t markerBit = 0x80;
inline constexpr std::uint8_t payloadTypeBits = 0x7f;

constexpr std::size_t payloadOffsetOf(std::uint8_t payloadType) {
    return payloadType == fecPayloadType ? fecPayloadOffset : rtpHeaderSize;
}

/// A non-owning look at the bytes of one RTP packet (RFC 3550 section 5.1). The field readers need
/// `length` >= 12 (payloadType: 2) and check nothing; isValid() may be asked of any bytes.
template <class Byte>
struct BasicRtpPacketView {
    Byte* data = nullptr;
    std::uint16_t length = 0;  ///< bytes of the whole packet, header included

    std::uint8_t payloadType() const { return data[1] & payloadTypeBits; }
    bool marker() const { return (data[1] & markerBit) != 0; }
    std::uint16_t sequenceNumber() const { return readBigEndian16(data + 2); }
    std::uint32_t timestamp() const { return readBigEndian32(data + 4); }
    std::uint32_t ssrc() const { return readBigEndian32(data + 8); }

    std::size_t payloadOffset() const { return payloadOffsetOf(payloadType()); }
    Byte* payload() const { return data + payloadOffset(); }
    /// Bytes behind the payload offset, modulo 65536.
    std::uint16_t payloadLength() const { return static_cast<std::uint16_t>(length - payloadOffset()); }

    /// True for a media packet of 12 to 1400 bytes or an FEC packet of 28 to 1416 bytes, each of
    /// version 2 without padding, extension and contributing sources.
    bool isValid() const {
        if (length < rtpHeaderSize || data[0] != versionTwo) return false;
        if (payloadType() == mediaPayloadType) return length <= maxMediaPacketSize;
        return payloadType() == fecPayloadType && length >= fecPayloadOffset && length <= maxFecPacketSize;
    }

    operator BasicRtpPacketView<const Byte>() const requires(!std::is_const_v<Byte>) {
        return {data, length};
    }
};

using RtpPacketView = BasicRtpPacketView<std::uint8_t>;
using ConstRtpPacketView = BasicRtpPacketView<const std::uint8_t>;

/// One RTP packet that owns its wire bytes. Held by exclusive ownership; header fields are read and
/// written in place through `view`. Packets up to the largest valid one live inside the object, so that
/// one allocation makes a packet.
class RtpPacket {
public:
    /// Copies `count` bytes; the view's length is `count` modulo 65536. Nothing is checked.
    RtpPacket(const std::uint8_t* bytes, std::size_t count);
    /// An empty FEC packet: 1416 zero bytes, all of them in view.
    RtpPacket();
    /// The same with bytes of any value, for one who writes them all.
    struct Unwritten {};
    explicit RtpPacket(Unwritten);

    RtpPacket(const RtpPacket&) = delete;
    RtpPacket& operator=(const RtpPacket&) = delete;

    /// Sets the buffer to `count` bytes, new ones zero. `view.data` may move; the view's length stays as it
    /// is.
    void resize(std::size_t count);
    std::size_t bufferSize() const { return size_; }

    bool isValid() const { return view.isValid(); }

    /// The payload of an FEC packet, on a vector's boundary: it is what gets XORed over and over.
    std::uint8_t* fecPayload() { return std::assume_aligned<vectorWidth>(view.data + fecPayloadOffset); }

private:
    static constexpr std::size_t vectorWidth = 16;
    static constexpr std::size_t lead = vectorWidth - fecPayloadOffset % vectorWidth;

    std::uint8_t* reserve(std::size_t count);

    std::size_t size_;
    std::unique_ptr<std::uint8_t[]> large_;
    alignas(vectorWidth) std::array<std::uint8_t, lead + maxFecPacketSize> inline_;

public:
    /// `data` is the start of the buffer; `length`, the bytes in use, is never more than it holds.
    RtpPacketView view;
};

}  // namespace mvrtpfec
