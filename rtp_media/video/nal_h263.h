#pragma once

#include <array>

#include "rtp_media/chain/nal.h"
#include "rtp_media/video/start_pattern.h"

namespace mvrtpfec {

/// A picture with its start code of 22 bits (ITU-T H.263, 5.1.1).
class NALH263 final : public NAL {
public:
    explicit NALH263(std::int32_t capacity) : NAL(StreamType::h263, capacity) {}

    static constexpr std::array<std::uint8_t, 2> prefix{0, 0};
    static constexpr std::array<StartPattern, 1> startPatterns{{{prefix, 0x80, 0xFC}}};
};

}  // namespace mvrtpfec
