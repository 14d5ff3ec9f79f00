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

    std::size_t losses() const;
    double loss() const;       ///< share
    double meanBurst() const;  ///< packets; 0 without losses
    std::size_t longestBurst() const;
};

/// What the sequence numbers of the media packets tell. Where numbers begin elsewhere, by over a thousand or
/// with another SSRC, nothing was lost. Throws FileError.
LossTrace readLossTrace(PacketSource& source);

}  // namespace mvrtpfec
