#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "host/io/ts_packet.h"

namespace mvrtpfec {

/// Presentation and decoding times are ticks of 90 kHz, modulo 2^33 (ISO/IEC 13818-1 section 2.4.3.7).
inline constexpr std::uint64_t pesTimeModulus = std::uint64_t{1} << 33;

/// One of them, in the five bytes where it stands.
class PesTime {
public:
    static constexpr std::size_t size = 5;

    explicit PesTime(std::span<std::uint8_t, size> bytes) : bytes_(bytes) {}

    std::uint64_t ticks() const;
    void setTicks(std::uint64_t ticks);

private:
    std::span<std::uint8_t, size> bytes_;
};

/// Those of the PES header that begins in a packet, as far as it has them in this packet.
struct PesTimes {
    std::optional<PesTime> presentation;
    std::optional<PesTime> decoding;  ///< none where it is the presentation time
};

/// Any bytes may be asked; none in a scrambled packet.
PesTimes pesTimes(TsPacket& packet);

}  // namespace mvrtpfec
