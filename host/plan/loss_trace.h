#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "host/io/packet_source.h"

namespace mvrtpfec {

/// Which packets of a stream a network lost, in the order they were sent.
struct LossTrace {
    std::vector<bool> lost;
    std::optional<std::uint64_t> bitRate;  ///< of the transport stream in it, bits per second
    std::uint64_t outages = 0;             ///< of over a thousand packets; they count among the lost

    std::size_t losses() const;
    double loss() const;       ///< share
    double meanBurst() const;  ///< packets; 0 without losses
    std::size_t longestBurst() const;
};

/// What the sequence numbers of the media packets tell. Where over a thousand are missing they were lost if
/// the timestamps went on as long as they take and as long as it took them; else the source has begun anew,
/// as with another SSRC, and nothing was lost. Throws FileError.
LossTrace readLossTrace(PacketSource& source);

}  // namespace mvrtpfec
