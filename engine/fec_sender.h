#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "core/composers.h"

namespace mvrtpfec {

/// The two FEC streams of a sender, by convention sent to the media's UDP port + 2 and + 4 (SMPTE 2022-1,
/// section 7.1): `a` has the columns, or the rows where there are rows alone; `b` the rows of a matrix of
/// both.
enum class FecStream : std::uint8_t { a, b };

/// Makes the FEC packets of a media stream: the sender filter without a graph. What it makes is the same byte
/// for byte.
///
/// One thread, no lock; one allocation an FEC packet and none a media packet.
class FecSender {
public:
    /// Takes each finished FEC packet, inside the push() of the media packet that completed it.
    using Output = std::function<void(FecStream, std::shared_ptr<RtpPacket>)>;

    /// Mode, columns and rows as CFecComposer::checkMatrix says, which throws; mode 0 makes nothing.
    FecSender(const Output& output, std::int32_t mode, std::int32_t columns, std::int32_t rows);

    FecSender(const FecSender&) = delete;
    FecSender& operator=(const FecSender&) = delete;

    /// One media packet (RFC 3550, payload type 33, 12 to 1400 bytes; others protect nothing), read during
    /// the call. What the output throws comes out, and the matrix then stays a column behind.
    void push(ConstRtpPacketView media);

private:
    Composers composers_;
};

}  // namespace mvrtpfec
