#include "rtp_media/audio/stream_mux_config.h"

namespace mvrtpfec {

namespace {

/// LatmGetValue (ISO/IEC 14496-3, 1.7.3.1): one to four bytes.
std::uint32_t readLatmValue(BitReader& bits) {
    const std::uint32_t furtherBytes = bits.bits(2);
    return bits.bits(8 * (furtherBytes + 1));
}

void readVersion(BitReader& bits, StreamMuxConfig& config) {
    config.audioMuxVersion = bits.bits(1);
    if (config.audioMuxVersion == 0) return;
    const bool audioMuxVersionA = bits.flag();
    if (audioMuxVersionA) throw ReservedMuxVersionException(notImplementedText());
    readLatmValue(bits);  // taraBufferFullness
}

/// How the streams are put together; others than a single one aren't supported.
void readLayout(BitReader& bits, StreamMuxConfig& config) {
    const bool allStreamsSameTimeFraming = bits.flag();
    if (!allStreamsSameTimeFraming) throwNotImplemented();
    config.subframes = std::size_t{bits.bits(6)} + 1;
    const std::uint32_t furtherPrograms = bits.bits(4);
    if (furtherPrograms != 0) throwNotImplemented();
    const std::uint32_t furtherLayers = bits.bits(3);
    if (furtherLayers != 0) throwNotImplemented();
}

/// Version 1 tells the configuration's length; what it doesn't fill is skipped.
AudioSpecificConfig readAudio(BitReader& bits, std::uint32_t audioMuxVersion) {
    if (audioMuxVersion == 0) return parseAudioSpecificConfig(bits, std::nullopt);
    const std::size_t length = readLatmValue(bits);
    const std::size_t start = bits.position();
    const AudioSpecificConfig audio = parseAudioSpecificConfig(bits, length);
    bits.skip(length - (bits.position() - start));
    return audio;
}

void readFrameLength(BitReader& bits, StreamMuxConfig& config) {
    config.frameLengthType = bits.bits(3);
    if (config.frameLengthType != 0) throwNotImplemented();
    bits.skip(8);  // latmBufferFullness
}

/// Version 0 writes the length in digits to the base of 256, each with a flag in front: another follows.
std::uint32_t readOtherDataLength(BitReader& bits, std::uint32_t audioMuxVersion) {
    if (audioMuxVersion != 0) return readLatmValue(bits);
    std::uint32_t length = 0;
    for (int digits = 0;; ++digits) {
        if (digits == 4) throw BitstreamException("otherDataLenBits is longer than 32 bits");
        const bool another = bits.flag();
        length = length << 8 | bits.bits(8);
        if (!another) return length;
    }
}

}  // namespace

StreamMuxConfig parseStreamMuxConfig(BitReader& bits) {
    StreamMuxConfig config;
    readVersion(bits, config);
    readLayout(bits, config);
    config.audio = readAudio(bits, config.audioMuxVersion);
    // An explicit rate is refused here, unlike elsewhere.
    if (config.audio.samplingFrequency.index == SamplingFrequency::explicitIndex) throwNotImplemented();
    readFrameLength(bits, config);
    config.otherDataPresent = bits.flag();
    if (config.otherDataPresent) config.otherDataLenBits = readOtherDataLength(bits, config.audioMuxVersion);
    config.crcCheckPresent = bits.flag();
    if (config.crcCheckPresent) bits.skip(8);
    return config;
}

}  // namespace mvrtpfec
