#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace mvrtpfec::model {

using Bytes = std::vector<std::uint8_t>;

/// An RTP packet: a buffer and how many bytes of it are in use.
struct Packet {
    Packet() = default;
    /// The length is the count modulo 65536; the buffer keeps every byte.
    explicit Packet(const Bytes& bytes);

    Bytes buffer;
    std::uint16_t length = 0;

    std::uint16_t read16(std::size_t at) const;
    void write16(std::size_t at, std::uint16_t value);

    bool padding() const { return (buffer.at(0) & 0x20) != 0; }
    bool marker() const { return (buffer.at(1) & 0x80) != 0; }
    std::uint8_t payloadType() const { return buffer.at(1) & 0x7f; }
    std::uint16_t sequenceNumber() const { return read16(2); }

    std::uint16_t payloadOffset() const { return payloadType() == 96 ? 28 : 12; }
    /// In 16-bit arithmetic.
    std::uint16_t payloadLength() const { return static_cast<std::uint16_t>(length - payloadOffset()); }

    /// Too short for the header its payload type asks for.
    bool isTruncated() const;
    bool isValid() const;
    /// The bytes in use.
    Bytes wireBytes() const;
};

}  // namespace mvrtpfec::model
