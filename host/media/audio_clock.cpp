#include "host/media/audio_clock.h"

#include <array>

#include "rtp_media/audio/nal_aac.h"

namespace mvrtpfec {

std::optional<std::int64_t> AudioClock::timeOf(NAL& unit) {
    const auto length = lengthOf(unit);
    if (!length || length->sampleRate == 0) return std::nullopt;
    const std::int64_t time = clock_.now();
    clock_.advance(length->samples, length->sampleRate);
    return time;
}

std::optional<AudioClock::Length> AudioClock::lengthOf(NAL& unit) {
    if (unit.streamType() == StreamType::mpeg1Audio) return mpeg1LengthOf(unit);
    if (unit.streamType() == StreamType::ac3) return ac3LengthOf(unit);
    auto* const aac = dynamic_cast<NALAAC*>(&unit);
    if (aac == nullptr || !aac->frame()) return std::nullopt;
    return Length{aac->frame()->samples, aac->frame()->sampleRate};
}

/// ISO/IEC 11172-3, 2.4.2.3.
std::optional<AudioClock::Length> AudioClock::mpeg1LengthOf(const NAL& unit) {
    constexpr std::array<std::uint32_t, 4> rates{44100, 48000, 32000, 0};
    constexpr unsigned layerOne = 3;
    const auto bytes = unit.bytes();
    if (bytes.size() < 3) return std::nullopt;
    return Length{(bytes[1] >> 1 & 3U) == layerOne ? 384U : 1152U, rates.at(bytes[2] >> 2 & 3U)};
}

/// ATSC A/52, tables 5.6, E2.2 and E2.4: blocks of 256 samples; a dependent substream or another program
/// takes no time of its own.
std::optional<AudioClock::Length> AudioClock::ac3LengthOf(const NAL& unit) {
    constexpr std::array<std::uint32_t, 4> rates{48000, 44100, 32000, 0};
    constexpr std::array<std::uint32_t, 4> blocks{1, 2, 3, 6};
    constexpr std::uint32_t samplesPerBlock = 256;
    constexpr unsigned lastAc3 = 10;
    const auto bytes = unit.bytes();
    if (bytes.size() < 6) return std::nullopt;
    const std::uint32_t rate = rates.at(bytes[4] >> 6);
    if (bytes[5] >> 3U <= lastAc3) return Length{6 * samplesPerBlock, rate};
    const bool own = (bytes[2] >> 3U) == 0;
    const unsigned halved = bytes[4] >> 4 & 3U;
    if (rate == 0) return Length{own ? 6 * samplesPerBlock : 0, rates.at(halved) / 2};
    return Length{own ? blocks.at(halved) * samplesPerBlock : 0, rate};
}

}  // namespace mvrtpfec
