#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "core/fec_decoder.h"
#include "mvrtpfec/fec_totals.h"

namespace mvrtpfec {

/// The decoder of a receiver: replaced by a fresh one when it rejects a packet, with totals that outlive each
/// of them. What a decoder holds is released to the callback when it is replaced or goes.
///
/// Not thread-safe; the callback runs on the feeding thread and hears of packets as CFecDecoder says.
class ReplaceableDecoder {
public:
    explicit ReplaceableDecoder(PacketCallback onPacket) : onPacket_(std::move(onPacket)) {}
    ~ReplaceableDecoder() { end(); }

    ReplaceableDecoder(const ReplaceableDecoder&) = delete;
    ReplaceableDecoder& operator=(const ReplaceableDecoder&) = delete;

    /// Starts a run with a fresh decoder and totals of zero.
    void begin();
    /// Ends the run. The totals stay readable.
    void end();
    /// Makes a decoder where there is none. One made outside a run isn't counted.
    void provide();

    /// One packet for the decoder, which is made where there is none, and replaced when it rejects the
    /// packet.
    void feed(const std::uint8_t* bytes, std::size_t length);
    /// The same without a copy.
    void feed(std::unique_ptr<RtpPacket> packet);

    /// None outside a run, unless something was fed.
    const CFecDecoder* current() const { return current_ ? &current_->decoder : nullptr; }
    /// Of this run, or of the last one.
    FecTotals totals() const;

private:
    struct Counted {
        Counted(const PacketCallback& onPacket, bool isCounted) : decoder(onPacket), counts(isCounted) {}

        CFecDecoder decoder;
        bool counts;
    };

    void replace();
    void retire();
    void replaceRejecting();

    PacketCallback onPacket_;
    std::unique_ptr<Counted> current_;
    bool inRun_ = false;
    FecTotals past_;  ///< of the run's decoders that are gone
};

}  // namespace mvrtpfec
