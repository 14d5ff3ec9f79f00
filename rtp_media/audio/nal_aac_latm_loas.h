#pragma once

#include <optional>

#include "rtp_media/audio/audio_mux_element.h"
#include "rtp_media/chain/nal.h"

namespace mvrtpfec {

/// A LOAS frame with its header.
class NALAACLATMLOAS final : public NAL {
public:
    explicit NALAACLATMLOAS(std::int32_t capacity) : NAL(StreamType::aacLatm, capacity) {}

    /// What parseLoasFrame finds once the unit is complete; found with the first `previous` and kept. Throws
    /// what that throws.
    const LoasFrame& frame(const StreamMuxConfig* previous) {
        if (!frame_) frame_ = parseLoasFrame(bytes(), previous);
        return *frame_;
    }

private:
    std::optional<LoasFrame> frame_;
};

}  // namespace mvrtpfec
