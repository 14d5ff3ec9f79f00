#include "host/stages/repair_chain.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/fec_packet.h"
#include "core/same_run.h"
#include "core/serial_distance.h"

namespace mvrtpfec {

namespace {

/// The widest window the decoder can learn holds fewer.
constexpr std::uint32_t maxPadding = 65535;
/// What comes late makes an unguarded decoder go back.
constexpr int unguardedSlack = sameRun;

}  // namespace

std::uint64_t RepairFigures::resets() const {
    if (!guard) return receiver.resets;
    return std::min(receiver.resets - std::min(receiver.resets, guard->renewals), guard->matrixChanges);
}

RepairChain::RepairChain(FilterGraph& graph, const std::optional<GuardSettings>& guard,
                         mvn::log::ILogPerf& log, Output output)
    : output_(std::move(output)),
      ledger_(guard ? 0 : unguardedSlack),
      receiver_(graph, log,
                [this](ConstRtpPacketView packet, const Moment& moment) { deliver(packet, moment); }) {
    if (!guard) return;
    guard_ = std::make_unique<PacketGuard>(
        [this](ReceiverInput input, std::unique_ptr<RtpPacket> packet) {
            receiver_.push(static_cast<std::size_t>(input), std::move(packet), now_);
        },
        *guard);
}

void RepairChain::push(StreamPort port, std::span<const std::uint8_t> datagram, const Moment& moment) {
    push(port, std::make_unique<RtpPacket>(datagram.data(), datagram.size()), moment);
}

void RepairChain::push(StreamPort port, std::unique_ptr<RtpPacket> packet, const Moment& moment) {
    const std::uint64_t arrivals = now_.arrivals;
    now_ = moment;
    now_.arrivals = arrivals;
    if (packet->view.length < rtpHeaderSize) {
        ++runts_;
        return;
    }
    const auto input = static_cast<std::size_t>(port);
    if (packet->view.payloadType() == mediaPayloadType) mediaInput_ = input;
    note(packet->view);
    account(packet->view);
    feed(input, std::move(packet));
}

void RepairChain::account(ConstRtpPacketView packet) {
    constexpr std::uint8_t versionBits = 0xc0;
    if ((packet.data[0] & versionBits) != versionTwo) return;
    if (packet.payloadType() == mediaPayloadType)
        now_.arrivals = ledger_.arrive(packet);
    else if (!isBrokenOff_ && packet.payloadType() == fecPayloadType && packet.length >= fecPayloadOffset)
        ledger_.name(packet);
}

void RepairChain::passTime(std::chrono::steady_clock::time_point now) {
    if (guard_) guard_->passTime(now);
}

void RepairChain::feed(std::size_t input, std::unique_ptr<RtpPacket> packet) {
    if (guard_)
        guard_->push(std::move(packet));
    else
        receiver_.push(input, std::move(packet), now_);
}

void RepairChain::note(ConstRtpPacketView packet) {
    if (packet.payloadType() == mediaPayloadType)
        noteMedia(packet);
    else if (packet.payloadType() == fecPayloadType && packet.length >= fecPayloadOffset)
        noteFec(packet);
}

/// A number behind the newest is late; another source, or a second such number in order, is a restart.
void RepairChain::noteMedia(ConstRtpPacketView media) {
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
void RepairChain::noteFec(ConstRtpPacketView fec) {
    if (!newest_) return;
    const ProtectedRange range = protectedRange(fec);
    const int last = serialDistance(*newest_, range.last);
    if (serialDistance(*newest_, range.base) <= 0 && last > 0 && last < sameRun) newest_ = range.last;
}

void RepairChain::finish() {
    if (guard_) guard_->flush();
    receiver_.waitUntilIdle();
    if (newest_) pushOut();
    ledger_.finish();
}

void RepairChain::pushOut() {
    firstPadding_ = static_cast<std::uint16_t>(*newest_ + 1);
    // Where the first padding packet waits behind a hole the receiver gives it up; a second one then
    // takes its place, and without a hole it is the second that goes.
    if (!guard_) pad(0);
    while (!drained_ && paddingPushed_ < maxPadding) pad(paddingPushed_++);
}

void RepairChain::pad(std::uint32_t index) {
    feed(mediaInput_, makePadding(static_cast<std::uint16_t>(*firstPadding_ + index)));
    receiver_.waitUntilIdle();
}

/// A bare header: no sender makes a media packet without payload.
std::unique_ptr<RtpPacket> RepairChain::makePadding(std::uint16_t number) const {
    std::array<std::uint8_t, rtpHeaderSize> bytes{versionTwo, mediaPayloadType};
    writeBigEndian16(&bytes[2], number);
    writeBigEndian32(&bytes[8], ssrc_);
    return std::make_unique<RtpPacket>(bytes.data(), bytes.size());
}

bool RepairChain::isPadding(ConstRtpPacketView packet) const {
    return firstPadding_ && packet.length == rtpHeaderSize &&
           serialDistance(*firstPadding_, packet.sequenceNumber()) >= 0;
}

void RepairChain::deliver(ConstRtpPacketView packet, const Moment& moment) {
    if (isPadding(packet)) {
        drained_ = true;
        return;
    }
    ledger_.deliver(packet, moment.arrivals);
    ++delivered_;
    output_(packet, moment);
}

RepairFigures RepairChain::figures() const {
    RepairFigures figures{receiver_.totals(), delivered_, runts_, std::nullopt, ledger_.figures()};
    if (guard_) figures.guard = guard_->figures();
    const std::uint64_t ours = paddingPushed_ + (figures.guard ? figures.guard->refed : 0);
    figures.receiver.received -= std::min(figures.receiver.received, ours);
    return figures;
}

}  // namespace mvrtpfec
