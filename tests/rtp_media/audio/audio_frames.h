#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "rtp_media/audio/aac_raw_record.h"
#include "rtp_media/bits/bit_set.h"
#include "rtp_media/chain/rtp_packet_builder.h"
#include "tests/rtp_media/chain/collected_units.h"

namespace mvrtpfec::test {

/// Fields of a bit string: value and width.
using Fields = std::vector<std::pair<std::uint32_t, unsigned>>;

inline void appendFields(Bit_Set& bits, const Fields& fields) {
    for (const auto& [value, width] : fields) bits.append(value, width);
}

inline void appendBits(Bit_Set& bits, const Bit_Set& more) {
    for (std::size_t i = 0; i < more.size(); ++i) bits.append(more.at(i));
}

inline Bytes packed(const Fields& fields) {
    Bit_Set bits;
    appendFields(bits, fields);
    return bits.bytes();
}

inline Bytes joined(const std::vector<Bytes>& parts) {
    Bytes all;
    for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// AAC LC unless told otherwise; `payload` behind the header (and the CRC).
inline Bytes adtsFrame(const Bytes& payload, bool crc = false, std::uint32_t frequencyIndex = 3,
                       std::uint32_t channels = 2, std::uint32_t furtherBlocks = 0) {
    const auto length = static_cast<std::uint32_t>(payload.size() + (crc ? 9 : 7));
    Bytes frame = packed({{0xFFF, 12},
                          {0, 3},
                          {crc ? 0 : 1, 1},
                          {1, 2},
                          {frequencyIndex, 4},
                          {0, 1},
                          {channels, 3},
                          {0, 4},
                          {length, 13},
                          {0x7FF, 11},
                          {furtherBlocks, 2}});
    if (crc) frame.insert(frame.end(), {0xCC, 0xCC});
    return joined({frame, payload});
}

inline Bytes rawRecord(const Bytes& config, std::uint32_t configBits, const Bytes& frame,
                       std::optional<std::int64_t> time = std::nullopt) {
    Bytes record;
    writeAacRawRecord({time, 0x12345678, configBits, config, frame}, record);
    return record;
}

/// A LOAS frame around the bits of an AudioMuxElement.
inline Bytes loasFrame(const Bit_Set& element) {
    const Bytes content = element.bytes();
    return joined({packed({{0x2B7, 11}, {static_cast<std::uint32_t>(content.size()), 13}}), content});
}

/// AudioSpecificConfig of AAC LC, 48 kHz, stereo.
inline const Fields& lcConfig() {
    static const Fields fields{{2, 5}, {3, 4}, {2, 4}, {0, 3}};
    return fields;
}

/// Takes a parser's or a test's units and keeps the packets.
class CollectedPackets : public RTPPacketListener {
public:
    void onPacket(std::unique_ptr<RTPMediaPacket> packet) override { packets.push_back(std::move(packet)); }
    void onEndOfStream() override { ++endsOfStream; }

    /// RTP header, prefix and payload.
    Bytes wire(std::size_t index) const {
        Bytes bytes(packets[index]->serializedSize());
        packets[index]->serialize(bytes.data(), 0);
        return bytes;
    }
    /// Prefix and payload.
    Bytes body(std::size_t index) const {
        const Bytes bytes = wire(index);
        return {bytes.begin() + 12, bytes.end()};
    }

    std::vector<std::unique_ptr<RTPMediaPacket>> packets;
    int endsOfStream = 0;
};

/// A unit of one second's time, or of none.
template <class Unit>
std::unique_ptr<Unit> unitOf(const Bytes& bytes, bool timed = true) {
    auto unit = std::make_unique<Unit>(static_cast<std::int32_t>(bytes.size()));
    unit->append(bytes);
    unit->timing.hasPts = timed;
    unit->timing.pts = 10'000'000;
    return unit;
}

}  // namespace mvrtpfec::test
