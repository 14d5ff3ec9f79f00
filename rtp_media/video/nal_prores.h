#pragma once

#include <array>

#include "rtp_media/chain/nal.h"
#include "rtp_media/video/start_pattern.h"

namespace mvrtpfec {

/// A frame: its size in four bytes, the identifier 'icpf', the frame itself (SMPTE RDD 36, 5.1).
class NALProRes final : public NAL {
public:
    explicit NALProRes(std::int32_t capacity) : NAL(StreamType::proRes, capacity) {}

    static constexpr std::array<std::uint8_t, 3> prefix{'i', 'c', 'p'};
    static constexpr std::array<StartPattern, 1> startPatterns{{{prefix, 'f', 0xFF, 4}}};
};

}  // namespace mvrtpfec
