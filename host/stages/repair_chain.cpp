#include "host/stages/repair_chain.h"

#include <algorithm>
#include <utility>

#include "core/fec_packet.h"
#include "core/same_run.h"

namespace mvrtpfec {

namespace {

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
    drain_.observe(packet->view);
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

void RepairChain::finish() {
    if (guard_) guard_->flush();
    receiver_.waitUntilIdle();
    if (drain_.begin()) pushOut();
    ledger_.finish();
}

void RepairChain::pushOut() {
    // Where the first padding packet waits behind a hole the receiver gives it up; a second one then
    // takes its place, and without a hole it is the second that goes.
    if (!guard_) pad(0);
    while (!drained_ && paddingPushed_ < StreamDrain::maxPadding) pad(paddingPushed_++);
}

void RepairChain::pad(std::uint32_t index) {
    feed(mediaInput_, drain_.padding(index));
    receiver_.waitUntilIdle();
}

void RepairChain::deliver(ConstRtpPacketView packet, const Moment& moment) {
    if (drain_.isPadding(packet)) {
        drained_ = true;
        return;
    }
    ledger_.deliver(packet, moment.arrivals);
    ++delivered_;
    output_(packet, moment);
}

RepairFigures RepairChain::figures() const {
    RepairFigures figures{{receiver_.totals(), delivered_, runts_, std::nullopt}, ledger_.figures()};
    if (guard_) figures.guard = guard_->figures();
    const std::uint64_t ours = paddingPushed_ + (figures.guard ? figures.guard->refed : 0);
    figures.receiver.received -= std::min(figures.receiver.received, ours);
    return figures;
}

}  // namespace mvrtpfec
