#include "guard/packet_guard.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace mvrtpfec {

namespace {

constexpr std::uint16_t lastNumber = 65535;
constexpr std::size_t maxEarly = 64;
constexpr unsigned largestMatrix = 100;  // packets

std::size_t checked(std::size_t packets, const char* message) {
    if (packets < 1 || packets > ReceiverGuard::largestWindow) throw std::invalid_argument(message);
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
      patience_(settings.patience),
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

void PacketGuard::passTime(std::chrono::steady_clock::time_point now) {
    if (patience_) orderer_.passTime(now, *patience_);
}

void PacketGuard::flush() {
    orderer_.flush();
}

GuardFigures PacketGuard::figures() const {
    const MediaOrderer::Figures& media = orderer_.figures();
    return {.late = media.late,
            .repeated = media.repeated + repeatedFec_,
            .holesSkipped = media.holes,
            .longestHole = media.longestHole,
            .fecKeptBack = fecKeptBack_,
            .foreign = media.stray + foreign_,
            .restarts = media.restarts,
            .refed = refed_,
            .renewals = renewals_,
            .matrixChanges = matrixChanges_};
}

void PacketGuard::pushFec(std::unique_ptr<RtpPacket> fec) {
    if (!orderer_.agrees(protectedRange(fec->view).base, fec->view.timestamp())) {
        ++fecKeptBack_;
        return;
    }
    const FecGate::Verdict verdict = gate_.judge(fec->view, orderer_.position());
    if (verdict == FecGate::Verdict::repeated) {
        ++repeatedFec_;
        return;
    }
    if (verdict == FecGate::Verdict::keptBack) {
        ++fecKeptBack_;
        return;
    }
    const FecKind kind = fecKind(fec->view);
    learnMatrix(kind, protectedRange(fec->view));
    if (verdict == FecGate::Verdict::early)
        holdEarly(std::move(fec));
    else
        handOnFec(std::move(fec), kind);
    if (isBegun(kind)) orderer_.begin();
}

/// Only after a column FEC packet does the decoder keep the first packets of a run long enough for columns to
/// repair them. Rows alone are begun with when two matrices like that of the run before have brought none.
bool PacketGuard::isBegun(FecKind kind) {
    if (kind == FecKind::column) return true;
    ++rowsAlone_;
    return usualRows_ && rowsAlone_ > 2u * *usualRows_;
}

void PacketGuard::learnMatrix(FecKind kind, const ProtectedRange& range) {
    const MatrixSize before = matrix_;
    matrix_.learn(kind, range);
    if (before == matrix_) return;
    unbroken_ = 0;
    const auto differs = [](std::uint8_t was, std::uint8_t is) { return was != 0 && was != is; };
    if (differs(before.columns, matrix_.columns) || differs(before.rows, matrix_.rows)) ++matrixChanges_;
}

void PacketGuard::handOnFec(std::unique_ptr<RtpPacket> fec, FecKind kind) {
    gate_.renumber(*fec, kind);
    output_(kind == FecKind::row ? ReceiverInput::rowFec : ReceiverInput::columnFec, std::move(fec));
}

void PacketGuard::holdEarly(std::unique_ptr<RtpPacket> fec) {
    if (early_.size() == maxEarly)
        ++fecKeptBack_;
    else
        early_.push_back(std::move(fec));
}

void PacketGuard::handOnEarly() {
    for (auto& fec : std::exchange(early_, {})) {
        const FecKind kind = fecKind(fec->view);
        handOnFec(std::move(fec), kind);
    }
}

void PacketGuard::handOnMedia(std::unique_ptr<RtpPacket> media, bool afterHole) {
    const std::uint16_t number = media->view.sequenceNumber();
    if (afterHole) unbroken_ = 0;
    const bool wraps = previous_ && number < *previous_;
    const bool renew = wraps && mayHoldFec();
    if (renew)
        renewAtWrap(number);
    else if (afterHole || restarted_)
        startAfresh(number);

    restarted_ = false;
    previous_ = number;
    ++unbroken_;
    last_ =
        number == lastNumber ? std::make_unique<RtpPacket>(media->view.data, media->view.length) : nullptr;
    output_(ReceiverInput::media, std::move(media));
    if (renew) teachMatrix(number);
    if (wraps) handOnEarly();
}

/// A decoder that has seen no hole for longer than its window has used up every FEC packet.
bool PacketGuard::mayHoldFec() const {
    const std::uint64_t window = 2u * matrix_.columns * std::max<std::uint8_t>(matrix_.rows, 1);
    return matrix_.columns != 0 && unbroken_ <= window;
}

void PacketGuard::startAfresh(std::uint16_t next) {
    // Without a matrix the decoder holds two packets and is soon replaced, but it would take 65535 along.
    if (matrix_.columns == 0 && previous_ != lastNumber) return renewDecoder(next);
    const auto handedOn = previous_.value_or(static_cast<std::uint16_t>(next - 1));
    output_(ReceiverInput::media, makeSpacer(farFrom(next), matrix_, handedOn));
}

void PacketGuard::renewDecoder(std::uint16_t next) {
    ++renewals_;
    output_(ReceiverInput::media, makeRenewal(farFrom(next)));
}

/// The decoder that ends here releases what it holds up to 65534. The next one begins with 65535, so
/// that it sees what is missing behind it.
void PacketGuard::renewAtWrap(std::uint16_t next) {
    if (!last_) return renewDecoder(next);
    renewDecoder(lastNumber);
    output_(ReceiverInput::media, std::move(last_));
    ++refed_;
    if (next != 0) startAfresh(next);
}

void PacketGuard::teachMatrix(std::uint16_t base) {
    if (matrix_.columns == 0) return;
    if (matrix_.rows != 0) handOnFec(makeTeacher(FecKind::column, matrix_, base), FecKind::column);
    handOnFec(makeTeacher(FecKind::row, matrix_, base), FecKind::row);
}

void PacketGuard::onRestart() {
    if (previous_) renewDecoder(*previous_);
    previous_.reset();
    restarted_ = true;
    unbroken_ = 0;
    if (matrix_.rows != 0 || rowsAlone_ * matrix_.columns > largestMatrix) usualRows_ = matrix_.rows;
    rowsAlone_ = 0;
    matrix_ = {};
    fecKeptBack_ += early_.size();
    early_.clear();
}

}  // namespace mvrtpfec
