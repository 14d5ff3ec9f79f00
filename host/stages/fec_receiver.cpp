#include "host/stages/fec_receiver.h"

#include <utility>

namespace mvrtpfec {

namespace {

constexpr std::int32_t reorderCapacity = 20;
constexpr std::int32_t maxSequenceNumber = 65535;

CRtpPacketReorderBuffer<std::shared_ptr<RtpPacket>> makeBuffer() {
    return {reorderCapacity, maxSequenceNumber, [](const std::shared_ptr<RtpPacket>& packet) -> std::int32_t {
                return packet->view.sequenceNumber();
            }};
}

ReceiverFigures plus(ReceiverFigures sum, const CFecDecoder& decoder) {
    sum.received += decoder.receivedCount();
    sum.lost += decoder.lostCount();
    sum.rebuilt += decoder.rebuiltCount();
    sum.abandoned += decoder.abandonedCount();
    return sum;
}

}  // namespace

FecReceiver::FecReceiver(Output output)
    : output_(std::move(output)),
      buffers_{makeBuffer(), makeBuffer(), makeBuffer()},
      decoder_(makeDecoder()) {}

std::unique_ptr<CFecDecoder> FecReceiver::makeDecoder() const {
    return std::make_unique<CFecDecoder>([this](RtpPacket* packet) { output_(packet->view); });
}

void FecReceiver::push(std::size_t input, std::unique_ptr<RtpPacket> packet) {
    buffers_[input].Push(Item(std::move(packet)));
    Item due;
    while (buffers_[input].Pop(due)) {
        if (FAILED(decoder_->Feed(due->view.data, due->view.length))) resetDecoder();
    }
}

void FecReceiver::resetDecoder() {
    past_ = plus(past_, *decoder_);
    ++past_.resets;
    auto fresh = makeDecoder();
    decoder_ = std::move(fresh);
}

ReceiverFigures FecReceiver::figures() const {
    return plus(past_, *decoder_);
}

}  // namespace mvrtpfec
