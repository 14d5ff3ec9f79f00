#pragma once

#include "rtp_media/data/nal_builder_sample_queue.h"
#include "rtp_media/data/nal_input_type_generic.h"

namespace mvrtpfec {

template <class Unit>
class NalBuilderSyncPointBased : public NALBuilderSampleQueue {
private:
    std::unique_ptr<NAL> takeUnit(PendingSamples& pending) const override {
        return pending.take<Unit>(pending.size());
    }
};

class NALBuilderTeletext final : public NalBuilderSyncPointBased<NalInputTypeGeneric<6>> {};
class NALBuilderDVBSubtitle final : public NalBuilderSyncPointBased<NalInputTypeGeneric<11>> {};
class NALBuilderTtml final : public NalBuilderSyncPointBased<NalInputTypeGeneric<18>> {};
class NALBuilderKLV final : public NalBuilderSyncPointBased<NalInputTypeGeneric<19>> {};
class NALBuilderWebVtt final : public NalBuilderSyncPointBased<NalInputTypeGeneric<20>> {};

}  // namespace mvrtpfec
