#include "host/io/pes_times.h"

#include <algorithm>
#include <array>

#include "core/big_endian.h"

namespace mvrtpfec {

namespace {

constexpr std::size_t tsHeaderSize = 4;
/// Of a PES header, up to its first time.
constexpr std::size_t fixedSize = 9;

std::span<std::uint8_t> payloadOf(TsPacket& packet) {
    const bool isScrambled = (packet.bytes[3] & 0xc0) != 0;
    if (!packet.hasPayload() || isScrambled || packet.isDamaged()) return {};
    const bool hasAdaptationField = (packet.bytes[3] & 0x20) != 0;
    const std::size_t start = tsHeaderSize + (hasAdaptationField ? 1u + packet.bytes[4] : 0u);
    return std::span(packet.bytes).subspan(std::min(start, tsPacketSize));
}

/// Streams whose packets have no header behind their length: maps, padding, private stream 2, ECM, EMM,
/// DSM-CC, H.222.1 type E and the directory.
bool hasHeader(std::uint8_t streamId) {
    constexpr std::array<std::uint8_t, 8> without{0xbc, 0xbe, 0xbf, 0xf0, 0xf1, 0xf2, 0xf8, 0xff};
    return streamId >= without.front() && std::ranges::find(without, streamId) == without.end();
}

}  // namespace

std::uint64_t PesTime::ticks() const {
    return std::uint64_t{bytes_[0] & 0x0eu} << 29 |
           std::uint64_t{readBigEndian16(&bytes_[1]) & 0xfffeu} << 14 | readBigEndian16(&bytes_[3]) >> 1;
}

void PesTime::setTicks(std::uint64_t ticks) {
    constexpr std::uint8_t marker = 1;
    bytes_[0] = static_cast<std::uint8_t>((bytes_[0] & 0xf1) | (ticks >> 29 & 0x0e));
    writeBigEndian16(&bytes_[1], static_cast<std::uint16_t>((ticks >> 14 & 0xfffe) | (bytes_[2] & marker)));
    writeBigEndian16(&bytes_[3], static_cast<std::uint16_t>((ticks << 1 & 0xfffe) | (bytes_[4] & marker)));
}

PesTimes pesTimes(TsPacket& packet) {
    const std::span<std::uint8_t> payload = payloadOf(packet);
    const bool startsUnit = (packet.bytes[1] & 0x40) != 0;
    PesTimes times;
    if (!startsUnit || payload.size() < fixedSize) return times;
    const bool isPes = payload[0] == 0 && payload[1] == 0 && payload[2] == 1 && hasHeader(payload[3]) &&
                       (payload[6] & 0xc0) == 0x80;
    const std::size_t end = fixedSize + payload[8];
    const auto timeAt = [&](std::size_t place) -> std::optional<PesTime> {
        if (place + PesTime::size > std::min(end, payload.size())) return std::nullopt;
        return PesTime(payload.subspan(place).first<PesTime::size>());
    };
    if (isPes && (payload[7] & 0x80) != 0) times.presentation = timeAt(fixedSize);
    if (isPes && (payload[7] & 0xc0) == 0xc0) times.decoding = timeAt(fixedSize + PesTime::size);
    return times;
}

}  // namespace mvrtpfec
