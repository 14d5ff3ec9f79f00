#include "host/interop/fec_intake.h"

#include "core/fec_packet.h"

namespace mvrtpfec {

namespace {

/// So many FEC packets that could be either are taken for ours then: standard ones of media of several
/// lengths would be of no use anyway.
constexpr int patience = 100;
/// So many of the other format are no chance: another sender.
constexpr int enough = 3;

}  // namespace

bool FecIntake::take(RtpPacketView packet) {
    if (packet.payloadType() == mediaPayloadType) {
        bridge_.note(packet);
        timestamps_.note(packet);
        return true;
    }
    if (format_ != FecFormat::native) timestamps_.settle(packet);
    const std::optional<FecFormat> told = isFixed_ ? std::nullopt : bridge_.formatOf(packet);
    // Of an even number of equal lengths the parity is 0 in both formats.
    const bool isEither = protectedRange(packet).count % 2 == 0;
    if (!isFixed_ && !isEither) follow(told);
    const bool taken = !format_ ? isEither : makeOurs(packet, told);
    if (!taken) ++leftOut_;
    return taken;
}

bool FecIntake::take(std::vector<std::uint8_t>& datagram) {
    const RtpPacketView packet{datagram.data(), static_cast<std::uint16_t>(datagram.size())};
    return datagram.size() != packet.length || !packet.isValid() || take(packet);
}

bool FecIntake::makeOurs(RtpPacketView fec, std::optional<FecFormat> told) {
    if (*format_ == FecFormat::standard) return bridge_.toNative(fec);
    // What is known to be of the other format would rebuild wrong lengths.
    return told != FecFormat::standard;
}

void FecIntake::follow(std::optional<FecFormat> told) {
    if (!format_ && (told || ++untold_ == patience)) return setFormat(told.value_or(FecFormat::native));
    if (!told) return;
    others_ = told == format_ ? 0 : others_ + 1;
    if (format_ && others_ == enough) setFormat(*told);
}

void FecIntake::setFormat(FecFormat format) {
    format_ = format;
    others_ = 0;
    // Two senders that take turns would fill it.
    const auto now = std::chrono::steady_clock::now();
    if (logged_ && now - *logged_ < std::chrono::seconds(10)) return;
    logged_ = now;
    log_.Log(2, "the FEC packets are %s", format == FecFormat::native ? "ours" : "standard ones");
}

}  // namespace mvrtpfec
