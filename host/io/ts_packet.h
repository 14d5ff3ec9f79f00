#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace mvrtpfec {

inline constexpr std::size_t tsPacketSize = 188;
inline constexpr std::uint8_t tsSyncByte = 0x47;
inline constexpr std::uint16_t nullPid = 0x1fff;

/// The program clock: ticks of 27 MHz, modulo 2^33 x 300 (ISO/IEC 13818-1 section 2.4.2.2).
inline constexpr std::uint64_t pcrFrequency = 27'000'000;
inline constexpr std::uint64_t pcrModulus = (std::uint64_t{1} << 33) * 300;

struct Pcr {
    std::uint64_t ticks;     ///< below pcrModulus
    std::uint16_t pid;       ///< of the packet that carries it
    bool startsNewTimeBase;  ///< discontinuity_indicator
};

/// One packet of a transport stream (ISO/IEC 13818-1 section 2.4.3.2). Any bytes may be asked.
struct TsPacket {
    std::array<std::uint8_t, tsPacketSize> bytes;

    bool hasSync() const { return bytes[0] == tsSyncByte; }

    /// The clock reference of the adaptation field (section 2.4.3.5), if it has one. None in a packet
    /// that is marked as damaged.
    std::optional<Pcr> pcr() const;
    /// Puts another value in its place: below pcrModulus, and pcr() has given one.
    void setPcr(std::uint64_t ticks);

    std::uint16_t pid() const;
    bool isDamaged() const { return (bytes[1] & 0x80) != 0; }
    bool hasPayload() const { return (bytes[3] & 0x10) != 0; }
};

/// A packet that means nothing and takes the place of one.
TsPacket nullTsPacket();

}  // namespace mvrtpfec
