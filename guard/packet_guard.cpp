#include "guard/packet_guard.h"

#include <stdexcept>
#include <utility>

namespace mvrtpfec {

namespace {

constexpr std::size_t maxHeld = 1000;
constexpr std::uint16_t lastNumber = 65535;

std::size_t checked(std::size_t packets, const char* message) {
    if (packets < 1 || packets > maxHeld) throw std::invalid_argument(message);
    return packets;
}

/// As far from `number` as a sequence number can be.
std::uint16_t farFrom(std::uint16_t number) {
    return static_cast<std::uint16_t>(number + 32768);
}

/// What the decoder takes without failing. Less strict than isValid(): a stream with header extensions
/// can't be rebuilt, but it must not stop here.
bool isAcceptable(ConstRtpPacketView packet) {
    if (packet.length < rtpHeaderSize || packet.data[0] < versionTwo || packet.data[0] >= versionTwo + 0x40)
        return false;
    return packet.payloadType() == mediaPayloadType ||
           (packet.payloadType() == fecPayloadType && packet.length >= fecPayloadOffset);
}

}  // namespace

PacketGuard::PacketGuard(Output output, const GuardSettings& settings)
    : output_(std::move(output)),
      orderer_(checked(settings.window, "the guard's window must be 1 to 1000 packets"),
               checked(settings.startHold, "the guard's start hold must be 1 to 1000 packets"),
               {[this](std::unique_ptr<RtpPacket> media, bool afterHole) {
                    handOnMedia(std::move(media), afterHole);
                },
                [this] { onRestart(); }}) {}

void PacketGuard::push(std::unique_ptr<RtpPacket> packet) {
    if (!isAcceptable(packet->view))
        ++foreign_;
    else if (packet->view.payloadType() == fecPayloadType)
        pushFec(std::move(packet));
    else
        orderer_.push(std::move(packet));
}

void PacketGuard::flush() {
    orderer_.flush();
}

GuardFigures PacketGuard::figures() const {
    const MediaOrderer::Figures& media = orderer_.figures();
    return {media.late,   media.repeated + repeatedFec_, media.holes,
            fecKeptBack_, media.stray + foreign_,        media.restarts};
}

void PacketGuard::pushFec(std::unique_ptr<RtpPacket> fec) {
    switch (gate_.judge(fec->view, orderer_.position())) {
        case FecGate::Verdict::repeated:
            ++repeatedFec_;
            return;
        case FecGate::Verdict::keptBack:
            ++fecKeptBack_;
            return;
        case FecGate::Verdict::pass:
            break;
    }
    const FecKind kind = fecKind(fec->view);
    const ProtectedRange range = protectedRange(fec->view);
    matrix_.learn(kind, range);
    watch_.addGroup(range);
    handOnFec(std::move(fec), kind);
    // Only now does the decoder keep the first packets long enough for columns to repair them.
    if (kind == FecKind::column) orderer_.begin();
}

void PacketGuard::handOnFec(std::unique_ptr<RtpPacket> fec, FecKind kind) {
    gate_.renumber(*fec, kind);
    output_(kind == FecKind::row ? ReceiverInput::rowFec : ReceiverInput::columnFec, std::move(fec));
}

void PacketGuard::handOnMedia(std::unique_ptr<RtpPacket> media, bool afterHole) {
    const std::uint16_t number = media->view.sequenceNumber();
    if (afterHole) noteHole(number);
    const bool renew = previous_ && mustRenewAt(number);
    if (renew)
        renewDecoder(number);
    else if (afterHole || restarted_)
        startAfresh(number);
    if (number == lastNumber || (previous_ && number < *previous_)) watch_.clear();

    restarted_ = false;
    previous_ = number;
    output_(ReceiverInput::media, std::move(media));
    if (renew) teachMatrix(number);
}

void PacketGuard::noteHole(std::uint16_t next) {
    if (!previous_) return;
    for (auto n = static_cast<std::uint16_t>(*previous_ + 1); n != next; ++n) watch_.addMissing(n);
}

bool PacketGuard::mustRenewAt(std::uint16_t next) const {
    if (next == lastNumber) return watch_.leavesGroupUnfinished();
    // With 65535 itself lost, groups up to it never count as complete.
    return next < *previous_ && *previous_ != lastNumber && matrix_.columns != 0;
}

void PacketGuard::startAfresh(std::uint16_t next) {
    if (matrix_.columns == 0) return renewDecoder(next);
    const auto handedOn = previous_.value_or(static_cast<std::uint16_t>(next - 1));
    output_(ReceiverInput::media, makeSpacer(farFrom(next), matrix_, handedOn));
}

void PacketGuard::renewDecoder(std::uint16_t next) {
    output_(ReceiverInput::media, makeRenewal(farFrom(next)));
}

void PacketGuard::teachMatrix(std::uint16_t base) {
    if (matrix_.rows != 0) handOnFec(makeTeacher(FecKind::column, matrix_, base), FecKind::column);
    handOnFec(makeTeacher(FecKind::row, matrix_, base), FecKind::row);
}

void PacketGuard::onRestart() {
    if (previous_) renewDecoder(*previous_);
    previous_.reset();
    restarted_ = true;
    watch_.clear();
}

}  // namespace mvrtpfec
