#pragma once

#include <string>

#include "host/media/unit_counter.h"
#include "rtp_media/chain/nal.h"

namespace mvrtpfec {

/// Watches a stream's units to be able to say afterwards why none of them became a packet, or why its session
/// description isn't complete.
class NoPacketReason {
public:
    void look(const NAL& unit);

    /// `figures` are those of all units looked at.
    std::string text(StreamType type, const UnitFigures& figures) const;
    static std::string sessionText(StreamType type);

private:
    std::string h264Text() const;

    bool slices_ = false;
    bool sps_ = false;
    bool timing_ = false;  ///< a sequence parameter set had VUI timing
};

}  // namespace mvrtpfec
