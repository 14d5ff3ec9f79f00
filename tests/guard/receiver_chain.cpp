#include "tests/guard/receiver_chain.h"

namespace mvrtpfec::testing {

namespace {

using Buffer = CRtpPacketReorderBuffer<std::shared_ptr<RtpPacket>>;

Buffer makeBuffer() {
    return {20, 65535, [](const std::shared_ptr<RtpPacket>& packet) -> std::int32_t {
                return packet->view.sequenceNumber();
            }};
}

}  // namespace

ReceiverChain::ReceiverChain(Mode mode, Output output)
    : output_(std::move(output)),
      buffers_{makeBuffer(), makeBuffer(), makeBuffer()},
      decoder_(makeDecoder()) {
    if (mode == Mode::plain) return;
    guard_.emplace(
        [this](ReceiverInput input, std::unique_ptr<RtpPacket> packet) { feed(input, std::move(packet)); });
}

std::unique_ptr<CFecDecoder> ReceiverChain::makeDecoder() const {
    return std::make_unique<CFecDecoder>(
        [this](RtpPacket* packet) { output_(Bytes(packet->view.data, packet->view.length)); });
}

void ReceiverChain::push(ReceiverInput port, Bytes bytes) {
    auto packet = std::make_unique<RtpPacket>(bytes.data(), bytes.size());
    if (guard_)
        guard_->push(std::move(packet));
    else
        feed(port, std::move(packet));
}

void ReceiverChain::feed(ReceiverInput input, std::unique_ptr<RtpPacket> packet) {
    Buffer& buffer = buffers_[static_cast<std::size_t>(input)];
    buffer.Push(Item(std::move(packet)));
    for (Item due; buffer.Pop(due);) {
        if (FAILED(decoder_->Feed(due->view.data, due->view.length))) replaceDecoder();
    }
}

/// The new one is there before the old one releases its packets.
void ReceiverChain::replaceDecoder() {
    ++decodersReplaced_;
    auto fresh = makeDecoder();
    decoder_.swap(fresh);
}

void ReceiverChain::finish() {
    if (guard_) guard_->flush();
    replaceDecoder();
}

}  // namespace mvrtpfec::testing
