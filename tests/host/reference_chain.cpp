#include "tests/host/reference_chain.h"

#include <algorithm>
#include <utility>

#include "core/fec_packet.h"
#include "core/serial_distance.h"
#include "platform/process/runtime_rand.h"

namespace mvrtpfec::reference {

namespace {

/// Numbers that the sender filter draws before its composers draw theirs.
constexpr int drawsOfTheFilter = 4;

constexpr std::int32_t reorderCapacity = 20;
constexpr std::int32_t maxSequenceNumber = 65535;

CRtpPacketReorderBuffer<std::shared_ptr<RtpPacket>> makeBuffer() {
    return {reorderCapacity, maxSequenceNumber, [](const std::shared_ptr<RtpPacket>& packet) -> std::int32_t {
                return packet->view.sequenceNumber();
            }};
}

RtpFecInTotals plus(RtpFecInTotals sum, const CFecDecoder& decoder) {
    sum.received += decoder.receivedCount();
    sum.lost += decoder.lostCount();
    sum.rebuilt += decoder.rebuiltCount();
    sum.abandoned += decoder.abandonedCount();
    return sum;
}

/// Further ahead a number belongs to another run of the source.
constexpr int sameRun = 1024;

/// The widest window the decoder can learn holds fewer.
constexpr std::uint32_t maxPadding = 65535;

}  // namespace

Sender::Sender(const MatrixConfig& config, Output output) : output_(std::move(output)) {
    CFecComposer::checkMatrix(config.mode, config.columns, config.rows);
    for (int i = 0; i < drawsOfTheFilter; ++i) platform::runtimeRand();

    const bool both = config.mode == fecBoth;
    composerA_ = std::make_unique<CFecComposer>(sinkOf(StreamPort::fecA), both ? fecColumn : config.mode,
                                                config.columns, config.rows);
    if (both)
        composerB_ =
            std::make_unique<CFecComposer>(sinkOf(StreamPort::fecB), fecRow, config.columns, config.rows);
}

FecPacketSink Sender::sinkOf(StreamPort port) const {
    return [this, port](const std::shared_ptr<RtpPacket>& packet) { output_(port, packet->view); };
}

void Sender::push(ConstRtpPacketView media) {
    composerA_->protect(media);
    if (composerB_) composerB_->protect(media);
}

Receiver::Receiver(Output output)
    : output_(std::move(output)),
      buffers_{makeBuffer(), makeBuffer(), makeBuffer()},
      decoder_(makeDecoder()) {}

std::unique_ptr<CFecDecoder> Receiver::makeDecoder() const {
    return std::make_unique<CFecDecoder>([this](RtpPacket* packet) { output_(packet->view); });
}

void Receiver::push(std::size_t input, std::unique_ptr<RtpPacket> packet) {
    buffers_[input].Push(Item(std::move(packet)));
    Item due;
    while (buffers_[input].Pop(due)) {
        if (FAILED(decoder_->Feed(due->view.data, due->view.length))) resetDecoder();
    }
}

void Receiver::resetDecoder() {
    past_ = plus(past_, *decoder_);
    ++past_.resets;
    auto fresh = makeDecoder();
    decoder_ = std::move(fresh);
}

RtpFecInTotals Receiver::totals() const {
    return plus(past_, *decoder_);
}

Repair::Repair(bool guarded, Output output)
    : output_(std::move(output)), receiver_([this](ConstRtpPacketView packet) { deliver(packet); }) {
    if (!guarded) return;
    guard_ = std::make_unique<PacketGuard>([this](ReceiverInput input, std::unique_ptr<RtpPacket> packet) {
        receiver_.push(static_cast<std::size_t>(input), std::move(packet));
    });
}

void Repair::push(StreamPort port, const std::vector<std::uint8_t>& datagram) {
    if (datagram.size() < rtpHeaderSize) {
        ++runts_;
        return;
    }
    auto packet = std::make_unique<RtpPacket>(datagram.data(), datagram.size());
    const auto input = static_cast<std::size_t>(port);
    if (packet->view.payloadType() == mediaPayloadType) mediaInput_ = input;
    note(packet->view);
    feed(input, std::move(packet));
}

void Repair::feed(std::size_t input, std::unique_ptr<RtpPacket> packet) {
    if (guard_)
        guard_->push(std::move(packet));
    else
        receiver_.push(input, std::move(packet));
}

void Repair::note(ConstRtpPacketView packet) {
    if (packet.payloadType() == mediaPayloadType)
        noteMedia(packet);
    else if (packet.payloadType() == fecPayloadType && packet.length >= fecPayloadOffset)
        noteFec(packet);
}

/// A number behind the newest is late; another source, or a second such number in order, is a restart.
void Repair::noteMedia(ConstRtpPacketView media) {
    const std::uint16_t number = media.sequenceNumber();
    const int ahead = newest_ ? serialDistance(*newest_, number) : 1;
    const bool goesOn = ahead > 0 || ahead < -sameRun;
    const bool restarts = media.ssrc() != ssrc_ || (behind_ && serialDistance(*behind_, number) == 1);
    if (goesOn || restarts) newest_ = number;
    behind_ = ahead < 0 && !goesOn ? std::optional(number) : std::nullopt;
    ssrc_ = media.ssrc();
}

/// An FEC packet leaves its sender after all the packets it protects, so one whose group has begun tells
/// of media packets that were sent last and never came.
void Repair::noteFec(ConstRtpPacketView fec) {
    if (!newest_) return;
    const ProtectedRange range = protectedRange(fec);
    const int last = serialDistance(*newest_, range.last);
    if (serialDistance(*newest_, range.base) <= 0 && last > 0 && last < sameRun) newest_ = range.last;
}

void Repair::finish() {
    if (guard_) guard_->flush();
    if (!newest_) return;
    firstPadding_ = static_cast<std::uint16_t>(*newest_ + 1);
    // Where the first padding packet waits behind a hole the receiver gives it up; a second one then
    // takes its place, and without a hole it is the second that goes.
    if (!guard_) feed(mediaInput_, makePadding(*firstPadding_));
    while (!drained_ && paddingPushed_ < maxPadding) {
        const auto number = static_cast<std::uint16_t>(*firstPadding_ + paddingPushed_++);
        feed(mediaInput_, makePadding(number));
    }
}

/// A bare header: no sender makes a media packet without payload.
std::unique_ptr<RtpPacket> Repair::makePadding(std::uint16_t number) const {
    std::array<std::uint8_t, rtpHeaderSize> bytes{versionTwo, mediaPayloadType};
    writeBigEndian16(&bytes[2], number);
    writeBigEndian32(&bytes[8], ssrc_);
    return std::make_unique<RtpPacket>(bytes.data(), bytes.size());
}

bool Repair::isPadding(ConstRtpPacketView packet) const {
    return firstPadding_ && packet.length == rtpHeaderSize &&
           serialDistance(*firstPadding_, packet.sequenceNumber()) >= 0;
}

void Repair::deliver(ConstRtpPacketView packet) {
    if (isPadding(packet)) {
        drained_ = true;
        return;
    }
    ++delivered_;
    output_(packet);
}

RepairFigures Repair::figures() const {
    RepairFigures figures{receiver_.totals(), delivered_, runts_, std::nullopt, {}};
    if (guard_) figures.guard = guard_->figures();
    const std::uint64_t ours = paddingPushed_ + (figures.guard ? figures.guard->refed : 0);
    figures.receiver.received -= std::min(figures.receiver.received, ours);
    return figures;
}

}  // namespace mvrtpfec::reference
