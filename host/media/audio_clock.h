#pragma once

#include "host/media/unit_clock.h"
#include "rtp_media/audio/stream_mux_config.h"

namespace mvrtpfec {

/// Frames of audio one behind the other, each as long as its samples at its sample rate.
class AudioClock : public UnitClock {
public:
    /// None for a frame that doesn't say how long it is; it takes no time.
    std::optional<std::int64_t> timeOf(NAL& unit) override;

private:
    struct Length {
        std::uint32_t samples = 0;
        std::uint32_t sampleRate = 0;  ///< Hz, not 0
    };

    std::optional<Length> lengthOf(NAL& unit);
    std::optional<Length> latmLengthOf(NAL& unit);
    static std::optional<Length> mpeg1LengthOf(const NAL& unit);
    static std::optional<Length> ac3LengthOf(const NAL& unit);

    std::int64_t start_ = 0;  ///< 100 ns, of the first frame at this rate
    std::uint32_t sampleRate_ = 0;
    std::uint64_t samples_ = 0;  ///< since then
    std::optional<StreamMuxConfig> config_;
};

}  // namespace mvrtpfec
