#include "host/graph/sent_numbers.h"

#include <algorithm>

#include "core/fec_packet.h"

namespace mvrtpfec {

void SentNumbers::note(ConstRtpPacketView media) {
    numbers_[count_++ % remembered] = media.sequenceNumber();
}

/// The newest packet is the last of the group that it has completed.
bool SentNumbers::agree(ConstRtpPacketView fec) const {
    const ProtectedRange range = protectedRange(fec);
    const std::uint64_t span = (range.count - std::uint64_t{1}) * range.offset;
    if (range.count == 0 || span >= std::min<std::uint64_t>(count_, remembered)) return false;
    const std::uint64_t first = count_ - 1 - span;
    for (std::uint64_t passed = 0; passed <= span; passed += range.offset)
        if (numbers_[(first + passed) % remembered] != static_cast<std::uint16_t>(range.base + passed))
            return false;
    return true;
}

}  // namespace mvrtpfec
