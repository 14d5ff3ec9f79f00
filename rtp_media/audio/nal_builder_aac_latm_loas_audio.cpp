#include "rtp_media/audio/nal_builder_aac_latm_loas_audio.h"

#include <utility>

#include "rtp_media/audio/mpeg4_audio_exception.h"

namespace mvrtpfec {

void NALBuilderAACLATMLOASAudio::emit(std::unique_ptr<NAL> unit) {
    learnConfig(*unit);
    setTime(unit->timing);
    NALBuilder::emit(std::move(unit));
}

void NALBuilderAACLATMLOASAudio::flush() {
    NALBuilderFrames::flush();
    config_.reset();
    clock_ = {};
    sampleTime_.reset();
}

void NALBuilderAACLATMLOASAudio::learnConfig(NAL& unit) {
    auto* const latm = dynamic_cast<NALAACLATMLOAS*>(&unit);
    if (latm == nullptr) return;
    try {
        config_ = latm->frame(config_ ? &*config_ : nullptr).config;
    } catch (const BitstreamException&) {
    } catch (const Mpeg4AudioException&) {
        // The packetizer's to judge.
    }
}

/// Further frames that begin in the same sample share its time, and yet follow each other.
void NALBuilderAACLATMLOASAudio::setTime(SampleTiming& timing) {
    if (timing.hasPts != 0 && sampleTime_ != timing.pts) {
        sampleTime_ = timing.pts;
        clock_.setTo(timing.pts);
    }
    if (!config_ || config_->audio.samplingFrequency.hz == 0) return;
    if (timing.hasPts == 0) {
        timing.hasPts = 1;
        timing.pts = clock_.now();
    }
    clock_.advance(config_->frameSamples(), config_->audio.samplingFrequency.hz);
}

}  // namespace mvrtpfec
