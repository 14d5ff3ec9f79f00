#include "rtp_media/audio/nal_aac_raw.h"

#include "rtp_media/audio/aac_raw_record.h"
#include "rtp_media/audio/audio_specific_config.h"
#include "rtp_media/audio/mpeg4_audio_exception.h"

namespace mvrtpfec {

namespace {

AacFrame frameOf(const AudioSpecificConfig& config) {
    using Config = AudioSpecificConfig;
    AacFrame frame;
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
    return frame;
}

}  // namespace

std::span<const std::uint8_t> aacRawConfig(std::span<const std::uint8_t> unit, const AacFrame& frame) {
    constexpr std::size_t around = AacRawRecord::fixedSize + AacRawRecord::frameLengthSize;
    return unit.subspan(AacRawRecord::fixedSize, frame.headerLength - around);
}

std::optional<AacFrame> parseAacRawFrame(std::span<const std::uint8_t> unit) {
    if (unit.size() < AacRawRecord::fixedSize) return std::nullopt;
    const std::uint32_t configBits = aacRawConfigBits(unit);
    const std::size_t headerSize = aacRawHeaderSize(configBits);
    if (unit.size() < headerSize) return std::nullopt;
    if (unit.size() - headerSize != aacRawFrameLength(unit, headerSize)) return std::nullopt;
    try {
        BitReader bits(unit.subspan(AacRawRecord::fixedSize));
        AacFrame frame = frameOf(parseAudioSpecificConfig(bits, configBits));
        frame.headerLength = headerSize;
        return frame;
    } catch (const BitstreamException&) {
        return std::nullopt;
    } catch (const Mpeg4AudioException&) {
        return std::nullopt;
    }
}

}  // namespace mvrtpfec
