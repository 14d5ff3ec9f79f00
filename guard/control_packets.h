#pragma once

#include <cstdint>
#include <memory>

#include "core/fec_packet.h"
#include "core/rtp_packet.h"

// Packets the guard itself puts into the receiver's inputs. They steer its buffers and its decoder and
// never become media: whatever the decoder might rebuild from an FEC packet among them fails its
// validity test.

namespace mvrtpfec {

/// What FEC packets have told of the matrix; 0 for what is not known yet.
struct MatrixSize {
    std::uint8_t columns = 0;
    std::uint8_t rows = 0;

    void learn(FecKind kind, const ProtectedRange& range);
    bool operator==(const MatrixSize&) const = default;
};

/// Makes the media input's ordering buffer start afresh, so that it takes any number next, and means
/// nothing to the decoder: a row FEC packet over the one number `handedOn`. Columns not known count as 1.
std::unique_ptr<RtpPacket> makeSpacer(std::uint16_t sequenceNumber, const MatrixSize& matrix,
                                      std::uint16_t handedOn);

/// Makes the decoder fail and be replaced, which releases what it holds: a payload type it refuses.
std::unique_ptr<RtpPacket> makeRenewal(std::uint16_t sequenceNumber);

/// Teaches a fresh decoder that has taken media packet `base` the side of the matrix that FEC packets
/// of this kind carry. The guard's FEC numbering is the caller's.
std::unique_ptr<RtpPacket> makeTeacher(FecKind kind, const MatrixSize& matrix, std::uint16_t base);

}  // namespace mvrtpfec
