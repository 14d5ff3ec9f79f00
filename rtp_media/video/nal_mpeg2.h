#pragma once

#include <array>

#include "rtp_media/chain/nal.h"
#include "rtp_media/video/start_pattern.h"

namespace mvrtpfec {

/// A coded picture, a field or a frame, with the headers in front of it (ISO/IEC 13818-2, 6.2).
class NALMPEG2 final : public NAL {
public:
    explicit NALMPEG2(std::int32_t capacity) : NAL(StreamType::mpeg2Video, capacity) {}

    static constexpr std::array<std::uint8_t, 3> prefix{0, 0, 1};
    static constexpr std::array<StartPattern, 1> startPatterns{{{prefix, 0, 0}}};
};

}  // namespace mvrtpfec
