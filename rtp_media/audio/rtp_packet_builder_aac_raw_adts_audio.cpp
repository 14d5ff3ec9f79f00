#include "rtp_media/audio/rtp_packet_builder_aac_raw_adts_audio.h"

#include <utility>

#include "rtp_media/audio/adts_header.h"
#include "rtp_media/audio/nal_aac_adts.h"
#include "rtp_media/audio/nal_aac_raw.h"
#include "rtp_media/bits/byte_text.h"
#include "support/string_format.h"

namespace mvrtpfec {

namespace {

bool isRaw(const NAL& unit) {
    return unit.streamType() == StreamType::aacRaw;
}

std::optional<AacFrame> frameOf(NAL& unit) {
    if (auto* const aac = dynamic_cast<NALAAC*>(&unit)) return aac->frame();
    return isRaw(unit) ? parseAacRawFrame(unit.bytes()) : parseAdtsFrame(unit.bytes());
}

std::string configText(const NAL& unit, const AacFrame& frame) {
    if (isRaw(unit)) return toLowerHex(aacRawConfig(unit.bytes(), frame));
    return toLowerHex(audioSpecificConfigOf(frame.samplingFrequencyIndex, frame.channels));
}

/// AU Header Section (RFC 3640, 3.2.1): the length of the headers in bits, then one header of 13 bits of size
/// and 3 of index.
std::vector<std::uint8_t> auHeaderSection(std::size_t size) {
    return {0x00, 0x10, static_cast<std::uint8_t>(size >> 5), static_cast<std::uint8_t>(size << 3)};
}

}  // namespace

void RTPPacketBuilderAACRAWADTSAudio::onNAL(std::unique_ptr<NAL> unit) {
    if (unit->streamType() != StreamType::aacAdts && unit->streamType() != StreamType::aacRaw) return;
    const auto frame = frameOf(*unit);
    if (!frame || frame->sampleRate == 0) return;
    setSampleRate(frame->sampleRate);
    const SampleTiming timing = in90k(unit->timing);
    if (timing.hasPts == 0) return;
    if (!sdpReady()) buildSdp(*unit, *frame);
    auto section = auHeaderSection(unit->size() - frame->headerLength);
    send(std::make_unique<RTPMediaPacket>(std::move(unit), static_cast<std::int32_t>(frame->headerLength),
                                          std::move(section), payloadType()),
         timing);
}

void RTPPacketBuilderAACRAWADTSAudio::buildSdp(const NAL& unit, const AacFrame& frame) {
    std::string attributes = mvn::stringFormat("a=rtpmap:%u mpeg4-generic/%u/%u\\a=fmtp:%u ", payloadType(),
                                               frame.sampleRate, frame.channels, payloadType());
    attributes += "streamtype=5; profile-level-id=15; mode=AAC-hbr; config=" + configText(unit, frame) +
                  "; sizeLength=13; indexLength=3; indexDeltaLength=3; constantDuration=1024; object=2";
    if (frame.sbr) attributes += "; SBR-enabled=1";
    setSdpAttributes(std::move(attributes));
}

}  // namespace mvrtpfec
