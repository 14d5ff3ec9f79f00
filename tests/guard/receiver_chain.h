#pragma once

#include <array>

#include "core/fec_decoder.h"
#include "core/reorder_buffer.h"
#include "tests/guard/sender.h"

namespace mvrtpfec::testing {

/// What the receiver does with its three inputs, with the packet guard in front of them or without.
class ReceiverChain {
public:
    enum class Mode { plain, guarded };
    using Output = std::function<void(const Bytes&)>;

    ReceiverChain(Mode mode, Output output) : output_(std::move(output)) {
        if (mode == Mode::guarded)
            guard_.emplace([this](ReceiverInput input, std::unique_ptr<RtpPacket> packet) {
                feed(input, std::move(packet));
            });
    }

    void push(ReceiverInput port, const Bytes& bytes) {
        auto packet = std::make_unique<RtpPacket>(bytes.data(), bytes.size());
        if (guard_)
            guard_->push(std::move(packet));
        else
            feed(port, std::move(packet));
    }
    /// Ends the stream and releases what is left.
    void finish() {
        if (guard_) guard_->flush();
        replaceDecoder();
    }

    GuardFigures figures() const { return guard_->figures(); }
    int decodersReplaced() const { return decodersReplaced_; }

private:
    using Item = std::shared_ptr<RtpPacket>;
    using Buffer = CRtpPacketReorderBuffer<Item>;

    static Buffer makeBuffer() {
        return {20, 65535, [](const Item& packet) -> std::int32_t { return packet->view.sequenceNumber(); }};
    }
    std::unique_ptr<CFecDecoder> makeDecoder() const {
        return std::make_unique<CFecDecoder>([this](RtpPacket* packet) { output_(bytesOf(packet->view)); });
    }
    /// The new one is there before the old one releases its packets.
    void replaceDecoder() {
        ++decodersReplaced_;
        auto fresh = makeDecoder();
        decoder_.swap(fresh);
    }
    void feed(ReceiverInput input, std::unique_ptr<RtpPacket> packet) {
        Buffer& buffer = buffers_[static_cast<std::size_t>(input)];
        buffer.Push(Item(std::move(packet)));
        for (Item due; buffer.Pop(due);) {
            if (FAILED(decoder_->Feed(due->view.data, due->view.length))) replaceDecoder();
        }
    }

    Output output_;
    std::array<Buffer, 3> buffers_{makeBuffer(), makeBuffer(), makeBuffer()};
    std::unique_ptr<CFecDecoder> decoder_ = makeDecoder();
    int decodersReplaced_ = 0;
    std::optional<PacketGuard> guard_;
};

}  // namespace mvrtpfec::testing
