#pragma once

#include "rtp_media/chain/nal_builder.h"
#include "rtp_media/chain/pending_samples.h"

namespace mvrtpfec {

/// Cuts a transport stream (ISO/IEC 13818-1, 2.4.3) into its packets: from the first sync byte on every 188
/// bytes, whatever they hold. Of the packets that begin in a sample only the first has the sample's timing. A
/// packet that the end of the stream cuts short is dropped.
class NALBuilderMpeg2ts final : public NALBuilder {
public:
    void input(IMediaData* sample) override;
    void flush() override;

private:
    void takePackets(std::size_t carried);

    PendingSamples pending_;
    bool synced_ = false;
    bool carriedIsFirst_ = false;  ///< the packet begun and not yet ended is the first of its sample
};

}  // namespace mvrtpfec
