#include "host/io/ts_packet.h"

#include "core/big_endian.h"

namespace mvrtpfec {

std::optional<Pcr> TsPacket::pcr() const {
    const bool isDamaged = (bytes[1] & 0x80) != 0;
    const bool hasAdaptationField = (bytes[3] & 0x20) != 0;
    const bool holdsPcr = bytes[4] >= 7 && (bytes[5] & 0x10) != 0;
    if (isDamaged || !hasAdaptationField || !holdsPcr) return std::nullopt;
    const std::uint64_t base = std::uint64_t{readBigEndian32(&bytes[6])} << 1 | bytes[10] >> 7;
    const std::uint64_t extension = readBigEndian16(&bytes[10]) & 0x1ffu;
    return Pcr{.ticks = (base * 300 + extension) % pcrModulus,
               .pid = static_cast<std::uint16_t>(readBigEndian16(&bytes[1]) & 0x1fff),
               .startsNewTimeBase = (bytes[5] & 0x80) != 0};
}

}  // namespace mvrtpfec
