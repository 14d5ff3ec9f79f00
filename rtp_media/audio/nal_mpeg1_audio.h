#pragma once

#include "rtp_media/chain/nal.h"

namespace mvrtpfec {

/// An MPEG-1 audio frame with its header.
class NALMPEG1Audio final : public NAL {
public:
    explicit NALMPEG1Audio(std::int32_t capacity) : NAL(StreamType::mpeg1Audio, capacity) {}
};

}  // namespace mvrtpfec
