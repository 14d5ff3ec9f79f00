#include "rtp_media/audio/audio_specific_config.h"

#include "rtp_media/audio/mpeg4_audio_exception.h"
#include "rtp_media/audio/program_config_element.h"
#include "rtp_media/audio/sampling_frequency.h"

namespace mvrtpfec {

namespace {

using Config = AudioSpecificConfig;

/// ISO/IEC 14496-3, table 1.16.
std::uint32_t readObjectType(BitReader& bits) {
    const std::uint32_t type = bits.bits(5);
    return type == Config::escape ? 32 + bits.bits(6) : type;
}

SamplingFrequency readSamplingFrequency(BitReader& bits) {
    SamplingFrequency frequency;
    frequency.index = bits.bits(4);
    frequency.hz = frequency.index == SamplingFrequency::explicitIndex ? bits.bits(24)
                                                                       : samplingFrequencyAt(frequency.index);
    return frequency;
}

/// The object types with a GASpecificConfig (table 1.15).
bool isGeneralAudio(std::uint32_t type) {
    return (type >= 1 && type <= 4) || type == 6 || type == 7 || type == 17 || (type >= 19 && type <= 23);
}

/// The error resilient object types; an epConfig follows their configuration.
bool isErrorResilient(std::uint32_t type) {
    return type >= 17 && isGeneralAudio(type);
}

/// GASpecificConfig, behind extensionFlag (4.4.1).
void skipGeneralAudioExtension(BitReader& bits, std::uint32_t type) {
    if (type == Config::erBsac) {
        bits.skip(5 + 11);  // numOfSubFrame, layer_length
    } else if (isErrorResilient(type) && type != Config::erTwinVq) {
        bits.skip(3);  // the three resilience flags
    }
    const bool extensionFlag3 = bits.flag();
    if (extensionFlag3) throwNotImplemented();
}

/// GASpecificConfig (4.4.1).
void readGeneralAudio(BitReader& bits, Config& config, std::size_t configStart) {
    const bool frameLengthFlag = bits.flag();
    const bool isLowDelay = config.audioObjectType == Config::erAacLd;
    config.frameSamples = frameLengthFlag ? (isLowDelay ? 480 : 960) : (isLowDelay ? 512 : 1024);
    const bool dependsOnCoreCoder = bits.flag();
    if (dependsOnCoreCoder) bits.skip(14);
    const bool extensionFlag = bits.flag();
    if (config.channelConfiguration == 0) skipProgramConfigElement(bits, configStart);
    const std::uint32_t type = config.audioObjectType;
    if (type == Config::aacScalable || type == Config::erAacScalable) bits.skip(3);  // layerNr
    if (extensionFlag) skipGeneralAudioExtension(bits, type);
}

/// Hierarchical signalling: the extension's object type stands in front of the core's.
void readExtensionInFront(BitReader& bits, Config& config) {
    const std::uint32_t type = config.audioObjectType;
    if (type != Config::sbr && type != Config::parametricStereo) return;
    config.extensionAudioObjectType = type;
    config.sbrPresent = true;
    config.psPresent = type == Config::parametricStereo;
    config.extensionSamplingFrequency = readSamplingFrequency(bits);
    config.audioObjectType = readObjectType(bits);
    if (config.audioObjectType == Config::erBsac) bits.skip(4);  // extensionChannelConfiguration
}

/// All that comes before the configuration of the object type.
Config readFirstFields(BitReader& bits) {
    Config config;
    config.audioObjectType = readObjectType(bits);
    config.samplingFrequency = readSamplingFrequency(bits);
    config.channelConfiguration = bits.bits(4);
    readExtensionInFront(bits, config);
    return config;
}

/// Backward compatible signalling (1.6.2.1, syncExtensionType): what other readers take for padding.
void readExtensionBehind(BitReader& bits, Config& config, std::size_t end) {
    constexpr std::uint32_t syncExtension = 0x2B7;
    constexpr std::uint32_t psSyncExtension = 0x548;
    if (end - bits.position() < 16 || bits.bits(11) != syncExtension) return;
    const std::uint32_t type = readObjectType(bits);
    if (type != Config::sbr && type != Config::erBsac) return;
    config.extensionAudioObjectType = type;
    config.sbrPresent = bits.flag();
    if (config.sbrPresent) config.extensionSamplingFrequency = readSamplingFrequency(bits);
    if (type == Config::erBsac) {
        bits.skip(4);  // extensionChannelConfiguration
    } else if (config.sbrPresent && bits.position() + 12 <= end && bits.bits(11) == psSyncExtension) {
        config.psPresent = bits.flag();
    }
}

}  // namespace

AudioSpecificConfig parseAudioSpecificConfig(BitReader& bits, std::optional<std::size_t> length) {
    if (length && *length > bits.remaining())
        throw BitstreamException("the AudioSpecificConfig isn't all there");
    const std::size_t start = bits.position();
    Config config = readFirstFields(bits);
    if (!isGeneralAudio(config.audioObjectType)) throwNotImplemented();
    readGeneralAudio(bits, config, start);
    if (isErrorResilient(config.audioObjectType)) {
        const std::uint32_t epConfig = bits.bits(2);
        if (epConfig >= 2) throwNotImplemented();
    }
    if (!length) return config;
    const std::size_t end = start + *length;
    if (bits.position() <= end && config.extensionAudioObjectType == 0)
        readExtensionBehind(bits, config, end);
    if (bits.position() > end) throw BitstreamException("the AudioSpecificConfig is longer than told");
    return config;
}

std::optional<AudioSpecificConfig> readAudioSpecificConfig(std::span<const std::uint8_t> bytes,
                                                           std::size_t length) {
    try {
        BitReader bits(bytes);
        return parseAudioSpecificConfig(bits, length);
    } catch (const BitstreamException&) {
    } catch (const Mpeg4AudioException&) {
    }
    try {
        BitReader bits(bytes);
        const Config config = readFirstFields(bits);
        if (bits.position() <= length) return config;
    } catch (const BitstreamException&) {
    }
    return std::nullopt;
}

}  // namespace mvrtpfec
