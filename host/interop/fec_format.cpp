#include "host/interop/fec_format.h"

#include <algorithm>

#include "core/fec_packet.h"
#include "core/serial_distance.h"

namespace mvrtpfec {

void FecFormatBridge::note(ConstRtpPacketView media) {
    const std::int64_t number = length_ == 0 ? media.sequenceNumber() : unfolded(media.sequenceNumber());
    newest_ = length_ == 0 ? number : std::max(newest_, number);
    if (media.length == length_ && number >= changedAt_) return;
    changedAt_ = number;
    length_ = media.length;
}

std::int64_t FecFormatBridge::unfolded(std::uint16_t number) const {
    return newest_ + serialDistance(static_cast<std::uint16_t>(newest_), number);
}

std::optional<FecFormat> FecFormatBridge::formatOf(ConstRtpPacketView fec) const {
    if (!isUniform(fec) || protectedRange(fec).count % 2 == 0) return std::nullopt;
    const std::uint16_t field = readBigEndian16(fec.data + fec_header::lengthRecovery);
    for (const FecFormat format : {FecFormat::native, FecFormat::standard})
        if (field == lengthRecovery(fec, format)) return format;
    return std::nullopt;
}

bool FecFormatBridge::turn(RtpPacketView fec, FecFormat from, FecFormat to) const {
    std::uint8_t* const field = fec.data + fec_header::lengthRecovery;
    if (!isUniform(fec) || readBigEndian16(field) != lengthRecovery(fec, from)) return false;
    writeBigEndian16(field, lengthRecovery(fec, to));
    return true;
}

/// Whether all of the group had the length that media have now.
bool FecFormatBridge::isUniform(ConstRtpPacketView fec) const {
    return length_ != 0 && unfolded(protectedRange(fec).base) >= changedAt_;
}

/// The parity of as many equal lengths as the group has packets.
std::uint16_t FecFormatBridge::lengthRecovery(ConstRtpPacketView fec, FecFormat format) const {
    if (protectedRange(fec).count % 2 == 0) return 0;
    return static_cast<std::uint16_t>(format == FecFormat::native ? length_ : length_ - rtpHeaderSize);
}

}  // namespace mvrtpfec
