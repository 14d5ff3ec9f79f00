#pragma once

#include <cstdint>
#include <vector>

#include "tests/guard/sender.h"

namespace mvrtpfec::testing {

/// The measure for any decoder of these codes: has all the time and memory, and rebuilds from rows and
/// columns until nothing changes.
class IdealDecoder {
public:
    void take(const WirePacket& packet);
    /// How many of the media packets with ids below `count` stay missing. Ends the collecting.
    std::int64_t missingOf(std::int64_t count);

private:
    struct Group {
        std::int64_t base;
        std::uint8_t offset;
        std::uint8_t count;
    };

    bool complete(const Group& group);
    void peel();

    std::vector<bool> present_;
    std::vector<Group> groups_;
};

}  // namespace mvrtpfec::testing
