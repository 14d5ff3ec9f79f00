#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

#include "core/fec_decoder.h"
#include "core/reorder_buffer.h"

namespace mvrtpfec {

/// The decoders' own counters, summed over all that a run used, and how many were replaced.
struct ReceiverFigures {
    std::uint64_t received = 0;
    std::uint64_t lost = 0;
    std::uint64_t rebuilt = 0;
    std::uint64_t abandoned = 0;
    std::uint64_t resets = 0;
};

/// What the receiver filter does with its inputs: a reorder buffer for each; what comes due is fed to
/// the decoder, and a decoder that fails is replaced by a fresh one, its pending packets released.
class FecReceiver {
public:
    static constexpr std::size_t inputCount = 3;
    using Output = std::function<void(ConstRtpPacketView)>;

    explicit FecReceiver(Output output);

    /// One packet of at least 12 bytes on input 0, 1 or 2.
    void push(std::size_t input, std::unique_ptr<RtpPacket> packet);

    ReceiverFigures figures() const;

private:
    using Item = std::shared_ptr<RtpPacket>;

    std::unique_ptr<CFecDecoder> makeDecoder() const;
    void resetDecoder();

    Output output_;
    std::array<CRtpPacketReorderBuffer<Item>, inputCount> buffers_;
    std::unique_ptr<CFecDecoder> decoder_;
    ReceiverFigures past_;  ///< of the decoders replaced
};

}  // namespace mvrtpfec
