#pragma once

#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "rtp_media/chain/rtp_packet_builder.h"
#include "tests/rtp_media/chain/collected_units.h"

namespace mvrtpfec::test {

/// What a packetizer gave out of one packet.
struct SentPacket {
    std::uint64_t sequence;
    bool marker;
    std::uint64_t pts;
    std::uint64_t ptsOrDts;
    bool discontinuity;
    std::uint64_t clockRate;
    Bytes prefix;
    Bytes payload;
};

/// A packetizer and what came out of it.
class Packetizer : public RTPPacketListener {
public:
    explicit Packetizer(StreamType type, ParameterSetMode mode = ParameterSetMode::sdp)
        : type_(type),
          builder_(RTPPacketBuilder::create(type, 96, 5000, this, mode, TimestampMode::decode)) {}

    void onPacket(std::unique_ptr<RTPMediaPacket> packet) override {
        Bytes wire(packet->serializedSize());
        const auto sizes = packet->serialize(wire.data(), 0);
        const auto prefixEnd = wire.begin() + 12 + static_cast<std::ptrdiff_t>(sizes.prefix);
        sent.push_back({packet->rtpSequence(), packet->marker(), packet->pts(), packet->ptsOrDts(),
                        packet->discontinuity(), packet->clockRate(), Bytes(wire.begin() + 12, prefixEnd),
                        Bytes(prefixEnd, wire.end())});
    }
    void onEndOfStream() override { ++ends; }

    /// A unit with a time in ticks of 90 kHz, or none.
    void give(const Bytes& bytes, std::optional<std::int64_t> ticks = std::nullopt,
              bool discontinuity = false) {
        auto unit = std::make_unique<NAL>(type_, static_cast<std::int32_t>(bytes.size()));
        unit->append(bytes);
        if (ticks) {
            unit->timing.hasPts = 1;
            unit->timing.pts = *ticks * 1000 / 9;
            unit->timing.discontinuity = discontinuity;
        }
        builder_->onNAL(std::move(unit));
    }
    void end() { builder_->onEndOfStream(); }

    RTPPacketBuilder& builder() { return *builder_; }
    std::vector<SentPacket> take() { return std::exchange(sent, {}); }

    std::vector<SentPacket> sent;
    int ends = 0;

private:
    StreamType type_;
    std::unique_ptr<RTPPacketBuilder> builder_;
};

inline std::vector<std::size_t> payloadSizes(const std::vector<SentPacket>& packets) {
    std::vector<std::size_t> sizes;
    for (const auto& packet : packets) sizes.push_back(packet.payload.size());
    return sizes;
}

/// A file of samples/streams.
inline Bytes sampleStream(const std::string& name) {
    std::ifstream file(std::string(MVRTPFEC_SAMPLES "/streams/") + name, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << name;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Gives every unit to a packetizer as it is, cut short at each of some places, and with bits turned over:
/// nothing may be read beyond a unit, which sanitizers watch, and nothing may stop the packetizer.
inline void abuse(StreamType type, const std::vector<Bytes>& units, std::uint32_t seed) {
    std::mt19937 random(seed);
    for (const auto mode : {ParameterSetMode::rewritten, ParameterSetMode::inBand}) {
        Packetizer packetizer(type, mode);
        for (int round = 0; round < 20; ++round) {
            for (Bytes unit : units) {
                if (random() % 3 == 0) unit.resize(random() % (std::min<std::size_t>(unit.size(), 80) + 1));
                for (auto flips = random() % 4; flips > 0 && !unit.empty(); --flips)
                    unit[random() % std::min<std::size_t>(unit.size(), 60)] ^=
                        static_cast<std::uint8_t>(1U << random() % 8);
                packetizer.give(unit, random() % 2 == 0 ? std::optional<std::int64_t>(round) : std::nullopt);
            }
        }
        packetizer.end();
        EXPECT_EQ(packetizer.ends, 1);
    }
}

}  // namespace mvrtpfec::test
