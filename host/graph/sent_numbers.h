#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "core/rtp_packet.h"

namespace mvrtpfec {

/// Remembers the numbers of media packets in the order in which they were protected. A sender's composers
/// count packets, an FEC packet names numbers: where the input has a hole, or packets out of order or twice,
/// the two part ways, and the FEC packet would have a receiver rebuild wrong ones.
class SentNumbers {
public:
    void note(ConstRtpPacketView media);
    /// Whether a valid FEC packet that the newest one has completed protects the packets that it names.
    bool agree(ConstRtpPacketView fec) const;

private:
    /// More than the largest matrix has.
    static constexpr std::size_t remembered = 256;

    std::array<std::uint16_t, remembered> numbers_{};
    std::uint64_t count_ = 0;
};

}  // namespace mvrtpfec
