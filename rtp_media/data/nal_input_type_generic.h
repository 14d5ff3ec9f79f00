#pragma once

#include "rtp_media/chain/nal.h"

namespace mvrtpfec {

/// A unit of a format of which only the boundaries are known, by the number of its stream type.
template <std::int32_t number>
class NalInputTypeGeneric final : public NAL {
public:
    explicit NalInputTypeGeneric(std::int32_t capacity) : NAL(static_cast<StreamType>(number), capacity) {}
};

}  // namespace mvrtpfec
