#pragma once

#include <cstdint>
#include <vector>

#include "core/fec_packet.h"
#include "core/sequence_set.h"

namespace mvrtpfec {

/// Watches the last numbers before 65535. The decoder can't finish a group once the media has wrapped,
/// keeps its FEC packet, and would combine it with the packets of the next cycle. This tells whether
/// there is such a group, so that the decoder is renewed at the wrap then and only then.
class WrapWatch {
public:
    /// Numbers and groups before this one are far enough from the wrap to be done with.
    static constexpr std::uint32_t start = SequenceSet::end - 1024;

    void addMissing(std::uint16_t number);
    void addGroup(const ProtectedRange& range);
    /// True when rebuilding what can be rebuilt leaves a watched group unfinished.
    bool leavesGroupUnfinished() const;
    void clear();

private:
    static constexpr std::size_t maxGroups = 1024;

    SequenceSet missing_;
    std::vector<ProtectedRange> groups_;
};

}  // namespace mvrtpfec
