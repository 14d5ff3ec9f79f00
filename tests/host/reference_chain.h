#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "core/fec_composer.h"
#include "core/fec_decoder.h"
#include "core/reorder_buffer.h"
#include "guard/packet_guard.h"
#include "host/graph/matrix_config.h"
#include "host/io/datagram.h"
#include "host/stages/repair_chain.h"

/// What the graphs must give, made from the core alone on one thread: no filters, samples or queues.
namespace mvrtpfec::reference {

/// The sender: a composer for each direction, column before row.
class Sender {
public:
    using Output = std::function<void(StreamPort, ConstRtpPacketView)>;

    Sender(const MatrixConfig& config, Output output);
    void push(ConstRtpPacketView media);

private:
    FecPacketSink sinkOf(StreamPort port) const;

    Output output_;
    std::unique_ptr<CFecComposer> composerA_;
    std::unique_ptr<CFecComposer> composerB_;
};

/// The receiver: a reorder buffer for each input, one decoder, replaced when it fails.
class Receiver {
public:
    using Output = std::function<void(ConstRtpPacketView)>;

    explicit Receiver(Output output);
    void push(std::size_t input, std::unique_ptr<RtpPacket> packet);
    RtpFecInTotals totals() const;

private:
    using Item = std::shared_ptr<RtpPacket>;

    std::unique_ptr<CFecDecoder> makeDecoder() const;
    void resetDecoder();

    Output output_;
    std::array<CRtpPacketReorderBuffer<Item>, 3> buffers_;
    std::unique_ptr<CFecDecoder> decoder_;
    RtpFecInTotals past_;
};

/// The repair of a finite stream, its end pushed out with padding.
class Repair {
public:
    using Output = std::function<void(ConstRtpPacketView)>;

    Repair(bool guarded, Output output);
    void push(StreamPort port, const std::vector<std::uint8_t>& datagram);
    void finish();
    RepairFigures figures() const;

private:
    void note(ConstRtpPacketView packet);
    void noteMedia(ConstRtpPacketView media);
    void noteFec(ConstRtpPacketView fec);
    void deliver(ConstRtpPacketView packet);
    void feed(std::size_t input, std::unique_ptr<RtpPacket> packet);
    std::unique_ptr<RtpPacket> makePadding(std::uint16_t number) const;
    bool isPadding(ConstRtpPacketView packet) const;

    Output output_;
    Receiver receiver_;
    std::unique_ptr<PacketGuard> guard_;
    std::size_t mediaInput_ = 0;
    std::optional<std::uint16_t> newest_;
    std::optional<std::uint16_t> behind_;
    std::uint32_t ssrc_ = 0;
    std::uint32_t paddingPushed_ = 0;
    std::optional<std::uint16_t> firstPadding_;
    bool drained_ = false;
    std::uint64_t delivered_ = 0;
    std::uint64_t runts_ = 0;
};

}  // namespace mvrtpfec::reference
