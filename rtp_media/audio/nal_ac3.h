#pragma once

#include "rtp_media/chain/nal.h"

namespace mvrtpfec {

/// An AC-3 or E-AC-3 syncframe.
class NALAC3 final : public NAL {
public:
    explicit NALAC3(std::int32_t capacity) : NAL(StreamType::ac3, capacity) {}
};

}  // namespace mvrtpfec
