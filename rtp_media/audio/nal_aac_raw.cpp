#include "rtp_media/audio/nal_aac_raw.h"

#include "rtp_media/audio/aac_raw_record.h"
#include "rtp_media/audio/audio_specific_config.h"

namespace mvrtpfec {

namespace {

void describe(const AudioSpecificConfig& config, AacFrame& frame) {
    using Config = AudioSpecificConfig;
    frame.sbr = config.sbrPresent;
    frame.channels = config.channelConfiguration;
    if (config.sbrPresent && config.extensionAudioObjectType == Config::sbr) {
        frame.sampleRate = config.extensionSamplingFrequency.hz;
        frame.samples = 2048;
    } else {
        frame.sampleRate = config.samplingFrequency.hz;
        frame.samples = config.audioObjectType == Config::aacLc ? 1024 : 2048;
    }
    if (config.extensionAudioObjectType == Config::parametricStereo) frame.channels *= 2;
}

}  // namespace

std::span<const std::uint8_t> aacRawConfig(std::span<const std::uint8_t> unit, const AacFrame& frame) {
    constexpr std::size_t around = AacRawRecord::fixedSize + AacRawRecord::frameLengthSize;
    return unit.subspan(AacRawRecord::fixedSize, frame.headerLength - around);
}

std::optional<AacFrame> parseAacRawFrame(std::span<const std::uint8_t> unit) {
    if (!isAacRawRecord(unit)) return std::nullopt;
    const std::uint32_t configBits = aacRawConfigBits(unit);
    AacFrame frame;
    frame.headerLength = aacRawHeaderSize(configBits);
    const auto config = readAudioSpecificConfig(aacRawConfig(unit, frame), configBits);
    if (!config) return std::nullopt;
    describe(*config, frame);
    return frame;
}

}  // namespace mvrtpfec
