#pragma once

#include <atomic>

#include "rtp_media/chain/rtp_packet_builder.h"

namespace mvrtpfec {

/// What both AAC packetizers have in common: one packet a frame, with the marker, on the clock of the sample
/// rate.
class RTPPacketBuilderAAC : public RTPPacketBuilder {
public:
    void onEndOfStream() override { deliverPacket(nullptr); }
    /// A frame of 1024 samples a packet; 0 before the sample rate is known.
    std::uint32_t getMaxPacketRate() const override { return (sampleRate() + 1023) / 1024; }

protected:
    using RTPPacketBuilder::RTPPacketBuilder;

    /// Stamps the packet of one frame and hands it on. `timing` in 90 kHz.
    void send(std::unique_ptr<RTPMediaPacket> packet, const SampleTiming& timing);

    std::uint32_t sampleRate() const noexcept { return sampleRate_.load(std::memory_order_relaxed); }
    void setSampleRate(std::uint32_t hz) noexcept { sampleRate_.store(hz, std::memory_order_relaxed); }

private:
    std::atomic<std::uint32_t> sampleRate_{0};  ///< read by whoever describes the stream, too
};

}  // namespace mvrtpfec
