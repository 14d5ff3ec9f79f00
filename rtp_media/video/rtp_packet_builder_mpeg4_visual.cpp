#include "rtp_media/video/rtp_packet_builder_mpeg4_visual.h"

#include <algorithm>
#include <utility>

#include "rtp_media/bits/byte_text.h"
#include "support/string_format.h"

namespace mvrtpfec {

namespace {

// ISO/IEC 14496-2, table 6-3.
constexpr std::uint8_t firstVideoObject = 0x00;
constexpr std::uint8_t firstVideoObjectLayer = 0x20;
constexpr std::uint8_t visualObjectSequence = 0xB0;
constexpr std::uint8_t visualObject = 0xB5;
constexpr std::uint8_t videoObjectPlane = 0xB6;

/// Far beyond the headers of any stream; one that repeats them without ever completing them goes no further.
constexpr std::size_t longestConfigHex = 65536;

bool isConfiguration(std::uint8_t code) {
    return code == firstVideoObjectLayer || code == firstVideoObject || code == visualObject ||
           code == visualObjectSequence;
}

bool hasStartCode(const NAL& unit, NAL::Header header) {
    return header.startCodeLength > 0 &&
           unit.bytes()[static_cast<std::size_t>(header.startCodeLength) - 1] == 1;
}

}  // namespace

void RTPPacketBuilderMPEG4Visual::onNAL(std::unique_ptr<NAL> unit) {
    if (unit->streamType() != StreamType::mpeg4Visual) return;
    const auto& header = unit->header();
    if (!header || !hasStartCode(*unit, *header)) return;
    const SampleTiming timing = in90k(unit->timing);
    if (!timing.hasPts) return;
    if (header->value < videoObjectPlane) {
        takeHeader(*unit, *header);
        return;
    }
    if (!sdpReady() && profileSeen_ && configSeen_) describe();
    packetize(*unit, timing);
}

void RTPPacketBuilderMPEG4Visual::takeHeader(const NAL& unit, NAL::Header header) {
    const auto profileAt = static_cast<std::size_t>(header.startCodeLength) + 1;
    if (!profileSeen_ && header.value == visualObjectSequence && unit.size() > profileAt) {
        profileLevel_ = unit.bytes()[profileAt];
        profileSeen_ = true;
    }
    if (sdpReady() || !isConfiguration(header.value)) return;
    if (configHex_.size() + 2 * unit.size() > longestConfigHex) return;
    configHex_ += toLowerHex(unit.bytes());
    configSeen_ = true;
}

void RTPPacketBuilderMPEG4Visual::describe() {
    const int type = static_cast<int>(payloadType());
    setSdpAttributes(
        mvn::stringFormat("a=rtpmap:%d MP4V-ES/90000\\", type) +
        mvn::stringFormat("a=fmtp:%d profile-level-id=%d; config=", type, static_cast<int>(profileLevel_)) +
        configHex_);
}

void RTPPacketBuilderMPEG4Visual::packetize(const NAL& unit, const SampleTiming& timing) {
    for (std::uint32_t at = 0; at < unit.size(); at += maxPayload) {
        const std::uint32_t count = std::min(unit.size() - at, maxPayload);
        send(NAL::fragmentOf(unit, at, count), at + count == unit.size(),
             static_cast<std::uint64_t>(timing.pts), at == 0 && timing.discontinuity != 0);
    }
}

void RTPPacketBuilderMPEG4Visual::send(std::unique_ptr<NAL> chunk, bool marker, std::uint64_t pts,
                                       bool discontinuity) {
    if (pendingPacket_ != nullptr) {
        pendingPacket_->addChunk(std::move(chunk));
    } else {
        pendingPacket_ =
            std::make_unique<RTPMediaPacket>(std::move(chunk), 0, std::vector<std::uint8_t>{}, payloadType());
    }
    pendingPacket_->stamp(sequenceCounter(), marker, videoClockRate, pts, pts, discontinuity);
    deliverPacket(std::exchange(pendingPacket_, nullptr));
}

}  // namespace mvrtpfec
