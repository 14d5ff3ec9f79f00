#include "host/media/unit_counter.h"

#include <algorithm>
#include <utility>

#include "host/media/frame_rate.h"
#include "host/media/unit_kind.h"

namespace mvrtpfec {

double UnitFigures::span() const {
    return first ? static_cast<double>(*last - *first) / static_cast<double>(unitsOfTime) : 0;
}

void UnitCounter::onNAL(std::unique_ptr<NAL> unit) {
    const std::string kind = unitKind(*unit);
    ++figures_.units;
    figures_.bytes += unit->size();
    ++figures_.kinds[kind];
    if (unit->timing.hasPts != 0) {
        figures_.first = std::min(figures_.first.value_or(unit->timing.pts), unit->timing.pts);
        figures_.last = std::max(figures_.last.value_or(unit->timing.pts), unit->timing.pts);
    }
    if (look_) look_(*unit, kind);
    if (next_ != nullptr) next_->onNAL(std::move(unit));
}

void UnitCounter::onEndOfStream() {
    if (next_ != nullptr) next_->onEndOfStream();
}

}  // namespace mvrtpfec
