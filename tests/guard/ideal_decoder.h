#pragma once

#include <algorithm>

#include "tests/guard/sender.h"

namespace mvrtpfec::testing {

/// The measure for any decoder of these codes: has all the time and memory, and rebuilds from rows and
/// columns until nothing changes.
class IdealDecoder {
public:
    void take(const WirePacket& packet) {
        if (packet.port != ReceiverInput::media) {
            const std::uint8_t* fec = packet.bytes.data();
            groups_.push_back({packet.id, fec[fec_header::offset], fec[fec_header::protectedCount]});
            return;
        }
        const auto id = static_cast<std::size_t>(packet.id);
        if (present_.size() <= id) present_.resize(id + 1);
        present_[id] = true;
    }
    /// How many of the media packets with ids below `count` stay missing. Ends the collecting.
    std::int64_t missingOf(std::int64_t count) {
        present_.resize(std::max(present_.size(), static_cast<std::size_t>(count)));
        for (bool changed = true; changed;) {
            changed = false;
            for (const Group& group : groups_) changed |= complete(group);
        }
        return std::count(present_.begin(), present_.begin() + count, false);
    }

private:
    struct Group {
        std::int64_t base;
        std::uint8_t offset;
        std::uint8_t count;
    };

    /// Rebuilds the one member that is missing; false when there is none or more than one.
    bool complete(const Group& group) {
        std::vector<std::size_t> missing;
        for (int k = 0; k < group.count && missing.size() < 2; ++k) {
            const auto id = static_cast<std::size_t>(group.base + k * group.offset);
            if (!present_[id]) missing.push_back(id);
        }
        if (missing.size() == 1) present_[missing.front()] = true;
        return missing.size() == 1;
    }

    std::vector<bool> present_;
    std::vector<Group> groups_;
};

}  // namespace mvrtpfec::testing
