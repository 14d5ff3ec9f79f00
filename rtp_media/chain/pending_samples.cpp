#include "rtp_media/chain/pending_samples.h"

#include <algorithm>

namespace mvrtpfec {

void PendingSamples::append(IMediaData* sample, std::span<const std::uint8_t> bytes) {
    entries_.push_back({sample, bytes});
    size_ += bytes.size();
}

void PendingSamples::discard(std::size_t count) {
    size_ -= count;
    while (count > 0) {
        auto& first = entries_.front().bytes;
        const std::size_t used = std::min(count, first.size());
        first = first.subspan(used);
        count -= used;
        if (first.empty()) entries_.pop_front();
    }
}

void PendingSamples::clear() {
    entries_.clear();
    size_ = 0;
}

void PendingSamples::moveTo(NAL& unit, std::size_t count) {
    if (count == 0) return;
    unit.timing = timingOf(*entries_.front().sample);
    std::size_t left = count;
    for (auto entry = entries_.begin(); left > 0; ++entry) {
        const std::size_t used = std::min(left, entry->bytes.size());
        unit.append(entry->bytes.first(used));
        left -= used;
    }
    discard(count);
}

}  // namespace mvrtpfec
