#pragma once

#include <cstdint>
#include <optional>

#include "core/rtp_packet.h"

namespace mvrtpfec {

/// Whose FEC packets. Ours carry in the length recovery field the parity of whole packet lengths; standard
/// ones (SMPTE 2022-1, section 7.3) that of the lengths behind the RTP header. Everything else agrees.
enum class FecFormat : std::uint8_t { native, standard };

/// Turns FEC packets of one format into the other. That needs media packets of one length, which is the rule
/// for transport streams: an FEC packet of a group where lengths differ can't be turned. One thread.
class FecFormatBridge {
public:
    /// Each media packet, before the FEC packets that protect it.
    void note(ConstRtpPacketView media);

    /// Rewrites a valid FEC packet. False for one that can't be turned, or isn't of the other format; it is
    /// left as it was.
    bool toStandard(RtpPacketView fec) { return turn(fec, FecFormat::native, FecFormat::standard); }
    bool toNative(RtpPacketView fec) { return turn(fec, FecFormat::standard, FecFormat::native); }

    /// The format of an FEC packet; nothing when it is the same in both, or that can't be told.
    std::optional<FecFormat> formatOf(ConstRtpPacketView fec) const;

private:
    bool turn(RtpPacketView fec, FecFormat from, FecFormat to) const;
    bool isUniform(ConstRtpPacketView fec) const;
    std::uint16_t lengthRecovery(ConstRtpPacketView fec, FecFormat format) const;

    std::int64_t unfolded(std::uint16_t number) const;

    std::uint16_t length_ = 0;    ///< of media packets; 0 before the first
    std::int64_t newest_ = 0;     ///< number, counted on over the wraps
    std::int64_t changedAt_ = 0;  ///< number of the first of this length, likewise
};

}  // namespace mvrtpfec
