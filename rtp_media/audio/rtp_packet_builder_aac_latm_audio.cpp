#include "rtp_media/audio/rtp_packet_builder_aac_latm_audio.h"

#include <cstdlib>
#include <utility>

#include "rtp_media/audio/copy_bits.h"
#include "rtp_media/audio/nal_aac_latm_loas.h"
#include "rtp_media/bits/byte_text.h"
#include "support/string_format.h"

namespace mvrtpfec {

void RTPPacketBuilderAACLATMAudio::onNAL(std::unique_ptr<NAL> unit) {
    if (unit->streamType() != StreamType::aacLatm) return;
    const auto frame = frameOf(*unit);
    if (!frame) return;
    config_ = frame->config;
    const SampleTiming timing = in90k(unit->timing);
    if (frame->config.audio.samplingFrequency.hz == 0 || timing.hasPts == 0) return;
    if (!sdpReady()) setSampleRate(frame->config.audio.samplingFrequency.hz);
    if (!sdpReady() && frame->configPresent) buildSdp(*unit, *frame);
    copyBits(unit->bytes(), frame->payloadStart, frame->payloadEnd, payload_);
    auto chunk = std::make_unique<NAL>(StreamType::aacLatm, static_cast<std::int32_t>(payload_.size()));
    chunk->append(payload_);
    chunk->timing = unit->timing;
    send(std::make_unique<RTPMediaPacket>(std::move(chunk), 0, std::vector<std::uint8_t>(), payloadType()),
         timing);
}

std::optional<LoasFrame> RTPPacketBuilderAACLATMAudio::frameOf(NAL& unit) const {
    const StreamMuxConfig* const previous = config_ ? &*config_ : nullptr;
    try {
        if (auto* const latm = dynamic_cast<NALAACLATMLOAS*>(&unit)) return latm->frame(previous);
        return parseLoasFrame(unit.bytes(), previous);
    } catch (const ReservedMuxVersionException&) {
        // Wanted so: a stream of a syntax that doesn't exist yet must not go out as if it were understood.
        std::abort();
    } catch (const Mpeg4AudioException&) {
        return std::nullopt;
    } catch (const BitstreamException&) {
        return std::nullopt;
    }
}

void RTPPacketBuilderAACLATMAudio::buildSdp(const NAL& unit, const LoasFrame& frame) {
    const AudioSpecificConfig& audio = frame.config.audio;
    std::vector<std::uint8_t> config;
    copyBits(unit.bytes(), frame.configStart, frame.configEnd, config);
    setSdpAttributes(mvn::stringFormat("a=rtpmap:%u MP4A-LATM/%u/%u\\a=fmtp:%u ", payloadType(), sampleRate(),
                                       audio.channelConfiguration, payloadType()) +
                     "profile-level-id=15; object=2; cpresent=0; config=" + toUpperHex(config));
}

}  // namespace mvrtpfec
