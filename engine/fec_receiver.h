#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <span>

#include "core/reorder_buffer.h"
#include "core/replaceable_decoder.h"
#include "engine/stream_drain.h"
#include "guard/packet_guard.h"

namespace mvrtpfec {

struct FecReceiverFigures {
    FecTotals receiver;
    std::uint64_t delivered = 0;  ///< media packets given to the output
    std::uint64_t runts = 0;      ///< datagrams too short for an RTP header, left out
    std::optional<GuardFigures> guard;
};

/// Rebuilds what is missing of a media stream and releases it in order: the receiver filter, with the packet
/// guard in front of it or without, but without a graph. What comes out is the same packet for packet, and so
/// are the counters.
///
/// One thread, no lock. A packet pushed by ownership is not copied, and nothing is allocated for it but FEC
/// packets rebuilt.
class FecReceiver {
public:
    /// Takes each released media packet, inside the call that set it free.
    using Output = std::function<void(ConstRtpPacketView)>;

    /// Without settings there is no guard. Throws std::invalid_argument for settings out of range.
    explicit FecReceiver(Output output, const std::optional<GuardSettings>& guard = GuardSettings{});
    /// What has not come out by then is lost.
    ~FecReceiver() { isOver_ = true; }

    FecReceiver(const FecReceiver&) = delete;
    FecReceiver& operator=(const FecReceiver&) = delete;

    /// One datagram of any of the three streams: anything. Without a guard each input must carry one stream.
    /// What the output throws comes out, and nothing more is given to an output that has thrown.
    void push(ReceiverInput input, std::unique_ptr<RtpPacket> packet);
    /// The same with a copy.
    void push(ReceiverInput input, std::span<const std::uint8_t> datagram);
    /// As PacketGuard::passTime.
    void passTime(std::chrono::steady_clock::time_point now);
    /// Ends the stream: releases all that is held. Nothing may be pushed afterwards.
    void finish();

    FecReceiverFigures figures() const;

private:
    using Buffer = CRtpPacketReorderBuffer<std::unique_ptr<RtpPacket>>;

    void enter(ReceiverInput input, std::unique_ptr<RtpPacket> packet);
    void feed(ReceiverInput input, std::unique_ptr<RtpPacket> packet);
    void pad(std::uint32_t index);
    void release(ConstRtpPacketView packet);
    void rethrowFailure() const;

    Output output_;
    std::exception_ptr failure_;  ///< of the output
    StreamDrain drain_;
    ReceiverInput mediaInput_ = ReceiverInput::media;
    std::uint32_t paddingPushed_ = 0;
    bool drained_ = false;
    bool isOver_ = false;
    std::uint64_t delivered_ = 0;
    std::uint64_t runts_ = 0;
    ReplaceableDecoder decoder_;
    std::array<Buffer, 3> buffers_;
    std::unique_ptr<PacketGuard> guard_;
};

}  // namespace mvrtpfec
