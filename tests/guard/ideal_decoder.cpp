#include "tests/guard/ideal_decoder.h"

#include <algorithm>

namespace mvrtpfec::testing {

void IdealDecoder::take(const WirePacket& packet) {
    if (packet.port != ReceiverInput::media) {
        const std::uint8_t* fec = packet.bytes.data();
        groups_.push_back({packet.id, fec[fec_header::offset], fec[fec_header::protectedCount]});
        return;
    }
    const auto id = static_cast<std::size_t>(packet.id);
    if (present_.size() <= id) present_.resize(id + 1);
    present_[id] = true;
}

std::int64_t IdealDecoder::missingOf(std::int64_t count) {
    present_.resize(std::max(present_.size(), static_cast<std::size_t>(count)));
    peel();
    return std::count(present_.begin(), present_.begin() + count, false);
}

void IdealDecoder::peel() {
    for (bool changed = true; changed;) {
        changed = false;
        for (const Group& group : groups_) changed |= complete(group);
    }
}

/// Rebuilds the one member that is missing; false when there is none or more than one.
bool IdealDecoder::complete(const Group& group) {
    std::vector<std::size_t> missing;
    for (int k = 0; k < group.count && missing.size() < 2; ++k) {
        const auto id = static_cast<std::size_t>(group.base + k * group.offset);
        if (!present_[id]) missing.push_back(id);
    }
    if (missing.size() == 1) present_[missing.front()] = true;
    return missing.size() == 1;
}

}  // namespace mvrtpfec::testing
