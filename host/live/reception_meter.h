#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>

#include "core/rtp_packet.h"
#include "host/live/media_input.h"

namespace mvrtpfec {

/// What can be seen of a stream before it is repaired, since the start.
struct ReceptionFigures {
    std::uint64_t media = 0;             ///< packets
    std::uint64_t mediaBytes = 0;        ///< of them, headers included
    std::uint64_t fec = 0;               ///< packets
    std::uint64_t fecMissing = 0;        ///< by the numbers of each FEC stream
    std::uint64_t foreign = 0;           ///< neither media nor FEC
    std::uint64_t longestGap = 0;        ///< packets missing in a row
    std::uint64_t restarts = 0;          ///< of the source: another SSRC, or numbers from elsewhere
    std::uint8_t columns = 0;            ///< L, 0 until an FEC packet has told it
    std::uint8_t rows = 0;               ///< D, 0 until a column FEC packet has told it, and of rows alone
    std::chrono::nanoseconds jitter{0};  ///< interarrival jitter (RFC 3550, section 6.4.1)
};

/// Watches packets arrive (one thread) and be delivered (another).
class ReceptionMeter {
public:
    /// False for a packet that is neither media nor FEC; it goes no further.
    bool arrive(ConstRtpPacketView packet, SteadyTime now);
    /// Takes how long a delivered packet was under way, unless it was rebuilt, and whether numbers are
    /// missing before it.
    void deliver(ConstRtpPacketView media, SteadyTime now);

    const ReceptionFigures& figures() const noexcept { return figures_; }
    /// Media packets whose numbers are missing in what was delivered. Any thread.
    std::uint64_t lostForGood() const noexcept { return lostForGood_; }
    /// The longest time from arrival to delivery since the last question.
    std::chrono::nanoseconds takeLatency() noexcept { return std::chrono::nanoseconds(latency_.exchange(0)); }

private:
    struct Delivered {
        std::uint16_t number = 0;
        std::uint32_t timestamp = 0;
        std::uint32_t ssrc = 0;
    };
    struct FecStream {
        std::optional<std::uint16_t> next;
    };

    void arriveMedia(ConstRtpPacketView media, SteadyTime now);
    void arriveFec(ConstRtpPacketView fec);
    void noteDelivered(const Delivered& now);
    void updateJitter(std::uint32_t timestamp, SteadyTime now);

    ReceptionFigures figures_;
    std::optional<std::uint16_t> newest_;
    std::uint32_t ssrc_ = 0;
    std::optional<std::int64_t> transit_;  ///< 90 kHz
    std::int64_t jitter_ = 0;              ///< sixteenths of 90 kHz
    std::array<FecStream, 2> fecStreams_;
    int rowsAlone_ = 0;  ///< row FEC packets since the last column FEC packet
    std::array<std::atomic<std::int64_t>, 65536> arrivals_{};  ///< by number, ns of the steady clock; 0 none
    std::atomic<std::int64_t> latency_{0};
    // The delivering thread's.
    std::optional<Delivered> delivered_;  ///< last
    double ticksApart_ = 0;               ///< of packets delivered one behind the other, on average
    std::atomic<std::uint64_t> lostForGood_{0};
};

}  // namespace mvrtpfec
