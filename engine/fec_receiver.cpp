#include "engine/fec_receiver.h"

#include <algorithm>
#include <utility>

namespace mvrtpfec {

namespace {

CRtpPacketReorderBuffer<std::unique_ptr<RtpPacket>> makeBuffer() {
    return {receiverReorderCapacity, maxRtpSequenceNumber,
            [](const std::unique_ptr<RtpPacket>& packet) -> std::int32_t {
                return packet->view.sequenceNumber();
            }};
}

}  // namespace

FecReceiver::FecReceiver(Output output, const std::optional<GuardSettings>& guard)
    : output_(std::move(output)),
      decoder_([this](RtpPacket* packet) { release(packet->view); }),
      buffers_{makeBuffer(), makeBuffer(), makeBuffer()} {
    decoder_.begin();
    if (!guard) return;
    guard_ = std::make_unique<PacketGuard>(
        [this](ReceiverInput input, std::unique_ptr<RtpPacket> packet) { feed(input, std::move(packet)); },
        *guard);
}

void FecReceiver::push(ReceiverInput input, std::span<const std::uint8_t> datagram) {
    push(input, std::make_unique<RtpPacket>(datagram.data(), datagram.size()));
}

void FecReceiver::push(ReceiverInput input, std::unique_ptr<RtpPacket> packet) {
    if (packet->view.length < rtpHeaderSize) {
        ++runts_;
        return;
    }
    if (packet->view.payloadType() == mediaPayloadType) mediaInput_ = input;
    drain_.observe(packet->view);
    enter(input, std::move(packet));
    rethrowFailure();
}

void FecReceiver::passTime(std::chrono::steady_clock::time_point now) {
    if (guard_) guard_->passTime(now);
    rethrowFailure();
}

void FecReceiver::enter(ReceiverInput input, std::unique_ptr<RtpPacket> packet) {
    if (guard_)
        guard_->push(std::move(packet));
    else
        feed(input, std::move(packet));
}

void FecReceiver::feed(ReceiverInput input, std::unique_ptr<RtpPacket> packet) {
    Buffer& buffer = buffers_[static_cast<std::size_t>(input)];
    buffer.Push(std::move(packet));
    for (std::unique_ptr<RtpPacket> due; buffer.Pop(due);) decoder_.feed(std::move(due));
}

void FecReceiver::finish() {
    if (guard_) guard_->flush();
    if (drain_.begin()) {
        // Where the first padding packet waits behind a hole the ordering buffer gives it up; a second one
        // then takes its place, and without a hole it is the second that goes.
        if (!guard_) pad(0);
        while (!drained_ && paddingPushed_ < StreamDrain::maxPadding) pad(paddingPushed_++);
    }
    rethrowFailure();
}

void FecReceiver::pad(std::uint32_t index) {
    enter(mediaInput_, drain_.padding(index));
}

/// The decoder goes on when an output fails; what it threw waits for the end of the push.
void FecReceiver::release(ConstRtpPacketView packet) {
    if (drain_.isPadding(packet)) {
        drained_ = true;
        return;
    }
    if (isOver_ || failure_) return;
    ++delivered_;
    try {
        output_(packet);
    } catch (...) {
        failure_ = std::current_exception();
    }
}

void FecReceiver::rethrowFailure() const {
    if (failure_) std::rethrow_exception(failure_);
}

FecReceiverFigures FecReceiver::figures() const {
    FecReceiverFigures figures{decoder_.totals(), delivered_, runts_, std::nullopt};
    if (guard_) figures.guard = guard_->figures();
    const std::uint64_t ours = paddingPushed_ + (figures.guard ? figures.guard->refed : 0);
    figures.receiver.received -= std::min(figures.receiver.received, ours);
    return figures;
}

}  // namespace mvrtpfec
