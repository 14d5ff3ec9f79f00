#include "rtp_media/data/nal_builder_mpeg2ts.h"

#include <algorithm>
#include <utility>

#include "rtp_media/chain/sample_bytes.h"
#include "rtp_media/data/nal_input_type_generic.h"

namespace mvrtpfec {

namespace {

constexpr std::size_t packetSize = 188;
constexpr std::uint8_t syncByte = 0x47;

}  // namespace

void NALBuilderMpeg2ts::input(IMediaData* sample) {
    auto bytes = sampleBytes(*sample);
    if (!synced_)
        bytes = bytes.subspan(static_cast<std::size_t>(std::ranges::find(bytes, syncByte) - bytes.begin()));
    if (bytes.empty()) return;
    synced_ = true;
    const std::size_t carried = pending_.size();
    try {
        pending_.append(sample, bytes);
        takePackets(carried);
    } catch (...) {
        // The listener's failure. What is open is lost with it, the rhythm too.
        pending_.clear();
        synced_ = false;
        throw;
    }
}

/// `carried`: bytes of the packet that began in an earlier sample.
void NALBuilderMpeg2ts::takePackets(std::size_t carried) {
    bool isFirst = carried > 0 ? carriedIsFirst_ : true;
    bool beganHere = carried == 0;
    while (pending_.size() >= packetSize) {
        auto unit = pending_.take<NalInputTypeGeneric<14>>(packetSize);
        if (!isFirst) unit->timing = SampleTiming();
        isFirst = !std::exchange(beganHere, true);
        emit(std::move(unit));
    }
    carriedIsFirst_ = isFirst;
}

void NALBuilderMpeg2ts::flush() {
    pending_.clear();
    endOfStream();
}

}  // namespace mvrtpfec
