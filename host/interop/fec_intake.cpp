#include "host/interop/fec_intake.h"

#include "core/fec_packet.h"

namespace mvrtpfec {

namespace {

/// So many FEC packets that could be either are taken for ours then: standard ones of media of several
/// lengths would be of no use anyway.
constexpr int patience = 100;

}  // namespace

bool FecIntake::take(RtpPacketView packet) {
    if (packet.payloadType() == mediaPayloadType) {
        bridge_.note(packet);
        timestamps_.note(packet);
        return true;
    }
    if (format_ != FecFormat::native) timestamps_.settle(packet);
    // Of an even number of equal lengths the parity is 0 in both formats.
    if (!format_ && protectedRange(packet).count % 2 != 0) tellFormat(packet);
    const bool taken = makeOurs(packet);
    if (!taken) ++leftOut_;
    return taken;
}

bool FecIntake::take(std::vector<std::uint8_t>& datagram) {
    const RtpPacketView packet{datagram.data(), static_cast<std::uint16_t>(datagram.size())};
    return datagram.size() != packet.length || !packet.isValid() || take(packet);
}

bool FecIntake::makeOurs(RtpPacketView fec) {
    if (!format_) return protectedRange(fec).count % 2 == 0;
    return *format_ == FecFormat::native || bridge_.toNative(fec);
}

void FecIntake::tellFormat(ConstRtpPacketView fec) {
    format_ = bridge_.formatOf(fec);
    if (!format_ && ++untold_ == patience) format_ = FecFormat::native;
    if (format_)
        log_.Log(2, "the FEC packets are %s", *format_ == FecFormat::native ? "ours" : "standard ones");
}

}  // namespace mvrtpfec
