#include "rtp_media/audio/nal_aac.h"

namespace mvrtpfec {

const std::optional<AacFrame>& NALAAC::frame() {
    if (!frameKnown_) {
        frame_ = parse();
        frameKnown_ = true;
    }
    return frame_;
}

}  // namespace mvrtpfec
