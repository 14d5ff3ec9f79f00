#include "guard/wrap_watch.h"

namespace mvrtpfec {

namespace {

struct GroupState {
    int missing = 0;
    std::uint16_t last = 0;  ///< a missing member
};

GroupState inspect(const ProtectedRange& range, const SequenceSet& missing) {
    GroupState state;
    for (std::uint32_t k = 0; k < range.count; ++k) {
        const auto number = static_cast<std::uint16_t>(range.base + k * range.offset);
        if (!missing.contains(number)) continue;
        ++state.missing;
        state.last = number;
    }
    return state;
}

}  // namespace

void WrapWatch::addMissing(std::uint16_t number) {
    if (number >= start) missing_.insert(number);
}

void WrapWatch::addGroup(const ProtectedRange& range) {
    if (range.last >= start && groups_.size() < maxGroups) groups_.push_back(range);
}

bool WrapWatch::leavesGroupUnfinished() const {
    if (groups_.size() == maxGroups) return true;
    SequenceSet missing = missing_;
    bool rebuilt = true;
    while (rebuilt) {
        rebuilt = false;
        for (const ProtectedRange& range : groups_) {
            const GroupState state = inspect(range, missing);
            if (state.missing == 1) rebuilt = missing.erase(state.last);
        }
    }
    for (const ProtectedRange& range : groups_) {
        if (inspect(range, missing).missing > 0) return true;
    }
    return false;
}

void WrapWatch::clear() {
    missing_ = {};
    groups_.clear();
}

}  // namespace mvrtpfec
