#pragma once

#include "rtp_media/chain/nal.h"

namespace mvrtpfec {

/// The H.264 packetizer ends an access unit at a unit that is no slice. Where pictures follow one another
/// without any such unit, this puts an access unit delimiter (ISO/IEC 14496-10, 7.3.2.4) between them, and
/// behind the last one, so that each is sent as one. Doesn't own the next listener.
class PictureCloser : public NALListener {
public:
    explicit PictureCloser(NALListener& next) : next_(next) {}

    void onNAL(std::unique_ptr<NAL> unit) override;
    void onEndOfStream() override;

private:
    void close();

    NALListener& next_;
    bool pictureOpen_ = false;
};

}  // namespace mvrtpfec
