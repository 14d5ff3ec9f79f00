// Any bytes as any elementary stream, in any samples, through its parser and its packetizer in each mode.
// Input: a byte for the format, a byte for where the stream is cut, then the stream.

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <span>
#include <stdexcept>
#include <vector>

#include "rtp_media/chain/nal_builder.h"
#include "rtp_media/chain/rtp_packet_builder.h"
#include "rtp_media/chain/simple_media_data.h"

namespace {

using namespace mvrtpfec;
using Bytes = std::span<const std::uint8_t>;

void require(bool condition) {
    if (!condition) std::abort();
}

/// The reserved flag of a LATM configuration stops the process; that is meant, and no finding.
bool stopsTheProcess(const NAL& unit) {
    const Bytes bytes = unit.bytes();
    return unit.streamType() == StreamType::aacLatm && bytes.size() > 3 && (bytes[3] & 0xE0) == 0x60;
}

struct UnitKeeper : NALListener {
    void onNAL(std::unique_ptr<NAL> unit) override {
        require(unit->size() == static_cast<std::uint32_t>(unit->capacity()));
        contents.insert(contents.end(), unit->bytes().begin(), unit->bytes().end());
        sizes.push_back(unit->size());
        if (next != nullptr && !stopsTheProcess(*unit)) next->onNAL(std::move(unit));
    }
    void onEndOfStream() override {
        if (next != nullptr) next->onEndOfStream();
    }

    NALListener* next = nullptr;
    std::vector<std::uint8_t> contents;
    std::vector<std::uint32_t> sizes;
};

/// Holds every packet against what packets have in common.
struct PacketCheck : RTPPacketListener {
    void onPacket(std::unique_ptr<RTPMediaPacket> packet) override {
        require(packet->stamped() && packet->rtpSequence() == count++);
        require(packet->payloadOffset() <= static_cast<std::int32_t>(packet->chunks()[0]->size()));
        packet->writeTimestamp(7);
        wire.resize(packet->serializedSize());
        const auto sizes = packet->serialize(wire.data(), 1);
        require(sizes.total == wire.size() && sizes.total == 12 + sizes.prefix + sizes.payload);
        require(packet->clockRate() != 0);
    }
    void onEndOfStream() override { ended = true; }

    std::uint64_t count = 0;
    bool ended = false;
    std::vector<std::uint8_t> wire;
};

/// Feeds the stream in samples of sizes that `cuts` draws; every other sample has times.
void feed(NALBuilder& parser, Bytes stream, std::uint32_t cuts) {
    std::uint32_t draw = cuts;
    for (std::int64_t time = 0; !stream.empty(); time += 400'000) {
        draw = draw * 1664525 + 1013904223;
        const std::size_t size =
            cuts == 0 ? stream.size() : std::min<std::size_t>(1 + (draw >> 16) % cuts, stream.size());
        const auto sample =
            SimpleMediaData::create({stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size)});
        if (cuts % 2 == 0 || time % 800'000 == 0) sample->SetTime(&time, nullptr);
        sample->SetSyncPoint((draw & 0x100) != 0);
        try {
            parser.input(sample.p);
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception&) {
            // A unit that its parser refuses; the stream goes on.
        }
        stream = stream.subspan(size);
    }
    parser.flush();
}

std::vector<std::uint32_t> checkPacketizer(StreamType type, Bytes stream, std::uint32_t cuts,
                                           ParameterSetMode mode) {
    PacketCheck packets;
    UnitKeeper units;
    const auto packetizer = RTPPacketBuilder::create(type, 96, 5000, &packets, mode, TimestampMode::decode);
    const auto parser = createNALBuilder(type);
    units.next = packetizer.get();
    parser->setListener(&units);
    feed(*parser, stream, cuts);
    require(packetizer == nullptr || packets.ended);
    return units.sizes;
}

/// Formats whose units are found in the bytes alone, whatever the samples.
bool isByteStream(StreamType type) {
    switch (type) {
        case StreamType::teletext:
        case StreamType::dvbSubtitle:
        case StreamType::aacRaw:
        case StreamType::scte35:
        case StreamType::ttml:
        case StreamType::klv:
        case StreamType::webVtt:
        case StreamType::syncPoint22:
        case StreamType::syncPoint23:
        case StreamType::syncPoint24:
            return false;
        default:
            return true;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const auto type = static_cast<StreamType>(data[0] % 25);
    const std::uint32_t cuts = data[1];
    const Bytes stream(data + 2, size - 2);
    if (createNALBuilder(type) == nullptr) return 0;
    const auto whole = checkPacketizer(type, stream, 0, ParameterSetMode::inBand);
    const auto pieces = checkPacketizer(type, stream, cuts, ParameterSetMode::rewritten);
    if (isByteStream(type)) require(whole == pieces);
    return 0;
}
