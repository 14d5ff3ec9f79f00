#include "rtp_media/data/nal_builder_sample_queue.h"

#include "rtp_media/chain/sample_bytes.h"

namespace mvrtpfec {

void NALBuilderSampleQueue::input(IMediaData* sample) {
    if (sample->IsSyncPoint()) emitQueued();
    const auto bytes = sampleBytes(*sample);
    if (bytes.empty()) return;
    pending_.append(sample, bytes);
    if (pending_.size() > PendingSamples::maxUnitSize) pending_.clear();
}

void NALBuilderSampleQueue::flush() {
    emitQueued();
    endOfStream();
}

void NALBuilderSampleQueue::emitQueued() {
    if (pending_.size() > 0) emit(takeUnit(pending_));
}

}  // namespace mvrtpfec
