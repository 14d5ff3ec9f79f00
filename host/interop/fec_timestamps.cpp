#include "host/interop/fec_timestamps.h"

#include "core/fec_packet.h"

namespace mvrtpfec {

namespace {

/// More than packets of another run come late.
constexpr int enough = 8;
/// 30 s of 90 kHz: no group is sent for longer.
constexpr std::int32_t longest = 30 * 90'000;

}  // namespace

void FecTimestamps::note(ConstRtpPacketView media) {
    stamps_[media.sequenceNumber() % remembered] = {media.sequenceNumber(), media.timestamp(), true};
}

std::optional<std::uint32_t> FecTimestamps::timestampOf(std::uint16_t number) const {
    const Stamp& stamp = stamps_[number % remembered];
    return stamp.isSet && stamp.number == number ? std::optional(stamp.timestamp) : std::nullopt;
}

void FecTimestamps::settle(RtpPacketView fec) {
    const auto first = timestampOf(protectedRange(fec).base);
    if (!first) return;
    const auto later = static_cast<std::int32_t>(fec.timestamp() - *first);
    if (later == 0) laterInARow_ = 0;
    if (later <= 0 || later > longest) return;
    if (++laterInARow_ >= enough) writeBigEndian32(fec.data + 4, *first);
}

}  // namespace mvrtpfec
