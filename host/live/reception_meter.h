#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>

#include "core/rtp_packet.h"
#include "host/interop/fec_watch.h"
#include "host/live/media_input.h"

namespace mvrtpfec {

/// What can be seen of a stream before it is repaired, since the start.
struct ReceptionFigures {
    std::uint64_t media = 0;       ///< packets
    std::uint64_t mediaBytes = 0;  ///< of them, headers included
    FecFigures fec;
    std::uint64_t foreign = 0;                       ///< neither media nor FEC
    std::optional<std::uint8_t> foreignPayloadType;  ///< of the latest that could be RTP
    std::chrono::nanoseconds jitter{0};              ///< interarrival jitter (RFC 3550, section 6.4.1)
};

/// Watches packets arrive (one thread) and be delivered (another).
class ReceptionMeter {
public:
    /// False for a packet that is neither media nor FEC; it goes no further.
    bool arrive(ConstRtpPacketView packet, SteadyTime now);
    /// Takes how long a delivered packet was under way, unless it was rebuilt.
    void deliver(ConstRtpPacketView media, SteadyTime now);

    ReceptionFigures figures() const;
    /// The longest time from arrival to delivery since the last question.
    std::chrono::nanoseconds takeLatency() noexcept { return std::chrono::nanoseconds(latency_.exchange(0)); }

private:
    void arriveMedia(ConstRtpPacketView media, SteadyTime now);
    void arriveForeign(ConstRtpPacketView packet);
    void updateJitter(std::uint32_t timestamp, SteadyTime now);

    ReceptionFigures figures_;  ///< but for those of FEC
    FecWatch fec_;
    std::optional<std::uint16_t> latest_;  ///< media number
    std::uint32_t ssrc_ = 0;
    std::optional<std::int64_t> transit_;                      ///< 90 kHz
    std::int64_t jitter_ = 0;                                  ///< sixteenths of 90 kHz
    std::array<std::atomic<std::int64_t>, 65536> arrivals_{};  ///< by number, ns of the steady clock; 0 none
    std::atomic<std::int64_t> latency_{0};
};

}  // namespace mvrtpfec
