#include "rtp_media/audio/nal_builder_aac_raw_audio.h"

#include "rtp_media/audio/aac_raw_record.h"
#include "rtp_media/audio/nal_aac_raw.h"

namespace mvrtpfec {

NALBuilderAACRawAudio::NALBuilderAACRawAudio()
    : NALBuilderFrames(std::nullopt, AacRawRecord::longestHeader) {}

NALBuilderFrames::Finding NALBuilderAACRawAudio::inspect(std::span<const std::uint8_t> header) const {
    if (header.size() < AacRawRecord::fixedSize) return {AacRawRecord::fixedSize, 0};
    const std::uint32_t configBits = aacRawConfigBits(header);
    if (configBits < AacRawRecord::shortestConfigBits || configBits > AacRawRecord::longestConfigBits)
        return noFrame();
    const std::size_t headerSize = aacRawHeaderSize(configBits);
    if (header.size() < headerSize) return {headerSize, 0};
    const std::uint32_t frameLength = aacRawFrameLength(header, headerSize);
    if (frameLength == 0 || frameLength > AacRawRecord::longestFrame) return noFrame();
    return {headerSize, headerSize + frameLength};
}

std::unique_ptr<NAL> NALBuilderAACRawAudio::takeUnit(PendingSamples& pending, std::size_t size) const {
    auto unit = pending.take<NALAACRaw>(size);
    const auto time = aacRawTime(unit->bytes());
    if (unit->timing.hasPts == 0 && time) {
        unit->timing.hasPts = 1;
        unit->timing.pts = *time;
    }
    return unit;
}

}  // namespace mvrtpfec
