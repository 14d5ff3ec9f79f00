#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>

#include "core/fec_decoder.h"
#include "core/reorder_buffer.h"
#include "tests/guard/sender.h"

namespace mvrtpfec::testing {

/// What the receiver does with its three inputs, with the packet guard in front of them or without.
class ReceiverChain {
public:
    enum class Mode { plain, guarded };
    using Output = std::function<void(Bytes)>;

    ReceiverChain(Mode mode, Output output);

    void push(ReceiverInput port, Bytes bytes);
    /// Ends the stream and releases what is left.
    void finish();

    GuardFigures figures() const { return guard_->figures(); }
    int decodersReplaced() const { return decodersReplaced_; }

private:
    using Item = std::shared_ptr<RtpPacket>;

    std::unique_ptr<CFecDecoder> makeDecoder() const;
    void replaceDecoder();
    void feed(ReceiverInput input, std::unique_ptr<RtpPacket> packet);

    Output output_;
    std::array<CRtpPacketReorderBuffer<Item>, 3> buffers_;
    std::unique_ptr<CFecDecoder> decoder_;
    int decodersReplaced_ = 0;
    std::optional<PacketGuard> guard_;
};

}  // namespace mvrtpfec::testing
