#pragma once

#include <array>

#include "rtp_media/chain/nal.h"
#include "rtp_media/video/start_pattern.h"

namespace mvrtpfec {

/// A header or a video object plane with its start code (ISO/IEC 14496-2, 6.2.1).
class NALMPEG4Visual final : public NAL {
public:
    explicit NALMPEG4Visual(std::int32_t capacity) : NAL(StreamType::mpeg4Visual, capacity) {}

    static constexpr std::array<std::uint8_t, 3> prefix{0, 0, 1};
    static constexpr std::array<StartPattern, 1> startPatterns{{{prefix, 0, 0}}};
};

}  // namespace mvrtpfec
