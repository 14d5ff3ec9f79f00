#include "rtp_media/data/nal_builder_scte35.h"

#include <utility>

#include "rtp_media/chain/sample_bytes.h"
#include "rtp_media/data/nal_scte35.h"

namespace mvrtpfec {

void NALBuilderSCTE35::input(IMediaData* sample) {
    const auto bytes = sampleBytes(*sample);
    if (bytes.empty()) return;
    if (bytes.size() < NALSCTE35::numberSize) throw SpliceInfoException("Splice info section ends too early");
    auto unit = std::make_unique<NALSCTE35>(static_cast<std::int32_t>(bytes.size()));
    unit->section = parseSpliceInfoSection(bytes.subspan(NALSCTE35::numberSize));
    unit->append(bytes);
    unit->timing = timingOf(*sample);
    emit(std::move(unit));
}

}  // namespace mvrtpfec
