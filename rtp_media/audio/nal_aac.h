#pragma once

#include <optional>

#include "rtp_media/audio/aac_frame.h"
#include "rtp_media/chain/nal.h"

namespace mvrtpfec {

/// One AAC frame with a header of some kind.
class NALAAC : public NAL {
public:
    /// What the header says, found once the unit is complete and kept; none when it is no such frame or can't
    /// be sent as one.
    const std::optional<AacFrame>& frame();

protected:
    using NAL::NAL;

private:
    virtual std::optional<AacFrame> parse() const = 0;

    bool frameKnown_ = false;
    std::optional<AacFrame> frame_;
};

}  // namespace mvrtpfec
