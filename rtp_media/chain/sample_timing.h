#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "framework/samples/metadata_records.h"

namespace mvrtpfec {

struct IMediaData;

/// What a unit takes along from the sample in which it began. Packetizers read the first two flags,
/// `discontinuity`, `pts` and `dts`; everything else travels through them unread.
struct SampleTiming {
    static constexpr std::uint32_t notSet32 = 0xFFFFFFFF;
    static constexpr std::uint16_t notSet16 = 0xFFFF;

    SampleTiming();

    std::uint8_t hasPts = 0;
    std::uint8_t hasDts = 0;
    std::uint8_t syncPoint = 0;
    std::uint8_t discontinuity = 0;
    std::uint8_t preroll = 0;
    std::int64_t pts = 0;          ///< start time, 100 ns
    std::int64_t dts = 0;          ///< media start time, 100 ns
    std::int64_t furtherTime = 0;  ///< 100 ns; converted with the others and read by nobody
    std::array<std::uint32_t, 18> slots32;
    std::array<std::uint16_t, 3> slots16;
    CuePoint cuePoint{};
    SampleDate sampleDate{};
    bool hasDataId = false;
    std::uint64_t dataId = 0;
};
static_assert(offsetof(SampleTiming, pts) == 8 && offsetof(SampleTiming, dts) == 16 &&
              offsetof(SampleTiming, furtherTime) == 24);

/// The block of a unit whose first byte lies in `sample`. Throws what the sample's metadata operations throw.
SampleTiming timingOf(IMediaData& sample);

/// 100 ns to ticks of 90 kHz, half a tick rounded away from zero; `time` within +-2^63 / 9.
constexpr std::int64_t ticks90k(std::int64_t time) {
    const std::int64_t scaled = static_cast<std::int64_t>(static_cast<std::uint64_t>(time) * 9);
    return (scaled < 0 ? scaled - 500 : scaled + 500) / 1000;
}

/// The block with its three times in ticks of 90 kHz.
SampleTiming in90k(const SampleTiming& timing);

}  // namespace mvrtpfec
