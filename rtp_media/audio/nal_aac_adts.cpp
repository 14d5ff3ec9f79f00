#include "rtp_media/audio/nal_aac_adts.h"

#include "rtp_media/audio/adts_header.h"
#include "rtp_media/audio/sampling_frequency.h"

namespace mvrtpfec {

std::optional<AacFrame> parseAdtsFrame(std::span<const std::uint8_t> unit) {
    const auto header = parseAdtsHeader(unit);
    if (!header || header->furtherDataBlocks != 0) return std::nullopt;
    AacFrame frame;
    frame.headerLength = header->headerLength;
    frame.samplingFrequencyIndex = header->samplingFrequencyIndex;
    frame.sampleRate = samplingFrequencyAt(header->samplingFrequencyIndex);
    frame.channels = header->channelConfiguration;
    frame.samples = 1024;
    return frame;
}

}  // namespace mvrtpfec
