#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>

#include "core/rtp_packet.h"
#include "guard/place_line.h"
#include "platform/threads/light_mutex.h"

namespace mvrtpfec {

/// What has become of a stream's media packets. They only grow.
struct LedgerFigures {
    std::uint64_t rebuilt = 0;       ///< delivered, though they hadn't come
    std::uint64_t lostForGood = 0;   ///< not delivered
    std::uint64_t longestBurst = 0;  ///< most lost in a row
    std::uint64_t outages = 0;       ///< gaps of more than a thousand numbers
    std::uint64_t restarts = 0;      ///< of the source: another SSRC, or numbers from elsewhere

    /// A packet that is missing is either rebuilt or lost for good; nothing else counts as lost.
    std::uint64_t lost() const { return rebuilt + lostForGood; }
};

/// The account of a stream on its way through a receiver: which packets came, which were delivered, and so
/// which ones are missing. Each place of the stream is settled once, when deliveries have passed it, so that
/// lost = rebuilt + lost for good at any time. Packets behind an outage count as lost, those that a restart
/// or a jump of the source leaves out don't, nor those before the first that came. Arrivals are one thread's,
/// deliveries may be another's.
class PacketLedger {
public:
    /// Deliveries may be out of order by `slack` packets.
    explicit PacketLedger(int slack) : slack_(slack) {}

    /// A media packet of at least 12 bytes has come. Returns how many have.
    std::uint64_t arrive(ConstRtpPacketView media);
    /// It was sent, for who knows: called for every packet sent, before it comes, if it does. Only these can
    /// be lost then.
    void expect(ConstRtpPacketView media);
    /// An FEC packet of at least 28 bytes has come. What it names behind the last media packet counts at the
    /// end.
    void name(ConstRtpPacketView fec);

    /// A media packet was delivered, set free when `asOf` packets had come: what comes later was lost.
    void deliver(ConstRtpPacketView media, std::uint64_t asOf);
    /// All that could be delivered has been.
    void finish();

    /// Any thread.
    LedgerFigures figures() const;

private:
    struct Delivery {
        std::uint16_t number;
        std::uint32_t timestamp;
        std::uint32_t ssrc;
        std::uint64_t asOf;
    };
    struct Hit {
        std::size_t stretch;
        Place place;
    };

    void add(ConstRtpPacketView media, std::uint64_t arrival);
    bool account(const Delivery& delivery);
    bool find(const Delivery& delivery, Hit& hit);
    bool hasCome(const Stretch& stretch, Place place, const Delivery& delivery);
    bool mayBeRebuilt(const Stretch& stretch, Place place, const Delivery& delivery);
    void closeOldest();
    void open(Stretch& stretch, Place first);
    void settleTo(Stretch& stretch, Place last);
    void settle(Place place);
    void lose(std::uint64_t packets, std::uint64_t& kind);

    const int slack_;
    mutable platform::LightMutex mutex_;
    PlaceLine line_;
    std::deque<Delivery> pending_;  ///< of a stretch that isn't begun yet
    LedgerFigures figures_;
    std::uint64_t arrivals_ = 0;
    std::uint64_t burst_ = 0;   ///< lost in a row up to the last one settled
    bool allAreKnown_ = false;  ///< expect() tells
};

}  // namespace mvrtpfec
