#include "rtp_media/chain/sample_timing.h"

#include "framework/samples/media_data.h"

namespace mvrtpfec {

SampleTiming::SampleTiming() {
    slots32.fill(notSet32);
    slots16.fill(notSet16);
}

SampleTiming timingOf(IMediaData& sample) {
    SampleTiming timing;
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    if (SUCCEEDED(sample.GetTime(&start, &stop))) {
        timing.hasPts = 1;
        timing.pts = start;
    }
    timing.syncPoint = sample.IsSyncPoint();
    timing.discontinuity = sample.IsDiscontinuity();
    timing.preroll = sample.IsPreroll();
    timing.cuePoint = sample.GetCuePoint();
    timing.sampleDate = sample.GetSampleDate();
    timing.hasDataId = sample.GetDataId(timing.dataId);
    LONGLONG mediaStart = 0;
    LONGLONG mediaStop = 0;
    if (SUCCEEDED(sample.GetMediaTime(&mediaStart, &mediaStop))) {
        timing.hasDts = 1;
        timing.dts = mediaStart;
    }
    return timing;
}

SampleTiming in90k(const SampleTiming& timing) {
    SampleTiming converted = timing;
    converted.pts = ticks90k(timing.pts);
    converted.dts = ticks90k(timing.dts);
    converted.furtherTime = ticks90k(timing.furtherTime);
    return converted;
}

}  // namespace mvrtpfec
