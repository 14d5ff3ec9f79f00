#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "rtp_media/h264/avc_sps.h"

namespace mvrtpfec {

/// Buffering period (ISO/IEC 14496-10, D.1.2).
struct AvcBufferingPeriod {
    struct Removal {
        std::uint32_t delay = 0;  ///< ticks of 90 kHz
        std::uint32_t offset = 0;
    };

    std::uint32_t spsId = 0;
    std::vector<Removal> nal;
    std::vector<Removal> vcl;
};

/// Picture timing (D.1.3).
struct AvcPictureTiming {
    struct Clock {
        std::uint8_t type = 0;
        bool nuitFieldBased = false;
        std::uint8_t countingType = 0;
        bool discontinuity = false;
        bool countDropped = false;
        std::uint8_t frames = 0;
        std::uint8_t seconds = 0;
        std::uint8_t minutes = 0;
        std::uint8_t hours = 0;
        std::int32_t offset = 0;
    };

    std::optional<std::uint32_t> removalDelay;
    std::optional<std::uint32_t> outputDelay;
    std::optional<std::uint8_t> picStruct;
    std::array<std::optional<Clock>, 3> clocks;
};

/// What the messages of one unit say of timing; other messages are passed over.
struct AvcSei {
    std::optional<AvcBufferingPeriod> bufferingPeriod;
    std::optional<AvcPictureTiming> pictureTiming;
};

/// Parses an RBSP (7.3.2.3) from behind the NAL header byte on. `current`: the sequence parameter set that
/// picture timing goes by; a buffering period goes by the one of `sets` that it names, and isn't taken where
/// that is missing. Throws BitstreamException.
AvcSei parseAvcSei(std::span<const std::uint8_t> rbsp, const AvcSps* current,
                   std::span<const std::optional<AvcSps>> sets);

}  // namespace mvrtpfec
