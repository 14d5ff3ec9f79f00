#include "host/io/ts_packet.h"

#include "core/big_endian.h"

namespace mvrtpfec {

std::optional<Pcr> TsPacket::pcr() const {
    const bool hasAdaptationField = (bytes[3] & 0x20) != 0;
    const bool holdsPcr = bytes[4] >= 7 && (bytes[5] & 0x10) != 0;
    if (isDamaged() || !hasAdaptationField || !holdsPcr) return std::nullopt;
    const std::uint64_t base = std::uint64_t{readBigEndian32(&bytes[6])} << 1 | bytes[10] >> 7;
    const std::uint64_t extension = readBigEndian16(&bytes[10]) & 0x1ffu;
    return Pcr{.ticks = (base * 300 + extension) % pcrModulus,
               .pid = pid(),
               .startsNewTimeBase = (bytes[5] & 0x80) != 0};
}

void TsPacket::setPcr(std::uint64_t ticks) {
    constexpr std::uint8_t reserved = 0x7e;
    const std::uint64_t base = ticks / 300;
    const std::uint64_t extension = ticks % 300;
    writeBigEndian32(&bytes[6], static_cast<std::uint32_t>(base >> 1));
    bytes[10] = static_cast<std::uint8_t>((base & 1) << 7 | (bytes[10] & reserved) | extension >> 8);
    bytes[11] = static_cast<std::uint8_t>(extension);
}

std::uint16_t TsPacket::pid() const {
    return readBigEndian16(&bytes[1]) & nullPid;
}

TsPacket nullTsPacket() {
    TsPacket packet;
    packet.bytes.fill(0xff);
    packet.bytes[0] = tsSyncByte;
    writeBigEndian16(&packet.bytes[1], nullPid);
    packet.bytes[3] = 0x10;
    return packet;
}

}  // namespace mvrtpfec
