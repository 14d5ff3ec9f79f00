#pragma once

#include <cstdint>

namespace mvrtpfec {

/// The format of a unit. Any 32-bit number may be passed about; what isn't listed has neither parser nor
/// packetizer.
enum class StreamType : std::int32_t {
    fragment = -1,  ///< bytes that a packetizer cut out of a unit or put together itself
    mpeg2Video = 0,
    mpeg1Audio = 1,
    h264 = 2,
    ac3 = 3,
    aacAdts = 4,
    aacLatm = 5,
    teletext = 6,
    h263 = 7,
    mpeg4Visual = 9,
    aacRaw = 10,
    dvbSubtitle = 11,
    scte35 = 12,
    mpeg2ts = 14,
    hevc = 17,
    ttml = 18,
    klv = 19,
    webVtt = 20,
    proRes = 21,
    syncPoint22 = 22,
    syncPoint23 = 23,
    syncPoint24 = 24,
};

/// Whether the sender counts a stream of this type as video.
constexpr bool isVideo(StreamType type) {
    constexpr std::uint32_t videoTypes = 0xE28285;
    const auto number = static_cast<std::uint32_t>(type);
    return number < 64 && (std::uint64_t{videoTypes} >> number & 1) != 0;
}

}  // namespace mvrtpfec
