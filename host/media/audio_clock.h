#pragma once

#include "host/media/unit_clock.h"
#include "rtp_media/audio/sample_clock.h"

namespace mvrtpfec {

/// Frames of audio one behind the other, each as long as its samples at its sample rate. Those in LATM are
/// timed by their parser.
class AudioClock : public UnitClock {
public:
    /// None for a frame that doesn't say how long it is; it takes no time.
    std::optional<std::int64_t> timeOf(NAL& unit) override;

private:
    struct Length {
        std::uint32_t samples = 0;
        std::uint32_t sampleRate = 0;  ///< Hz, not 0
    };

    static std::optional<Length> lengthOf(NAL& unit);
    static std::optional<Length> mpeg1LengthOf(const NAL& unit);
    static std::optional<Length> ac3LengthOf(const NAL& unit);

    SampleClock clock_;
};

}  // namespace mvrtpfec
