#pragma once

#include "rtp_media/chain/nal_builder.h"
#include "rtp_media/chain/pending_samples.h"

namespace mvrtpfec {

/// Base of the parsers whose units begin with a sample that is a sync point: everything up to the next such
/// sample is one unit. One that grows beyond PendingSamples::maxUnitSize is dropped.
class NALBuilderSampleQueue : public NALBuilder {
public:
    void input(IMediaData* sample) override;
    void flush() override;

protected:
    virtual std::unique_ptr<NAL> takeUnit(PendingSamples& pending) const = 0;

private:
    void emitQueued();

    PendingSamples pending_;
};

}  // namespace mvrtpfec
