#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "core/fec_packet.h"
#include "core/rtp_packet.h"

namespace mvrtpfec {

/// Where a packet stands among all of its stream: its number counted on over wraps and restarts.
using Place = std::int64_t;

/// What is known of the packet at a place.
struct PlaceSlot {
    Place place = 0;            ///< the one it is about; others share it
    std::uint64_t arrival = 0;  ///< when it came, in arrivals; 0 for not yet
    std::uint32_t timestamp = 0;
    bool isKnown = false;  ///< it came, or is known to have been sent
    bool isDelivered = false;
    bool isRebuilt = false;
};

/// Places without a restart or an outage between them.
struct Stretch {
    std::uint32_t ssrc = 0;
    Place origin = 0;  ///< of originNumber
    std::uint16_t originNumber = 0;
    Place first = 0;               ///< known
    Place last = 0;                ///< known
    Place named = 0;               ///< the last that an FEC packet names
    std::uint64_t lostBefore = 0;  ///< packets of the outage that it ends
    std::uint64_t begun = 0;       ///< in arrivals
    bool isConfirmed = false;      ///< by a second packet: a single one may be a stray

    // Of deliveries.
    bool isOpen = false;
    Place next = 0;       ///< the first that isn't settled
    Place delivered = 0;  ///< the furthest

    std::uint16_t numberOf(Place place) const {
        return static_cast<std::uint16_t>(originNumber + (place - origin));
    }
    /// The place of a number, the nearest to `reference`.
    Place placeOf(std::uint16_t number, Place reference) const;
};

/// Gives the media packets of one port places. A packet of another source or with a number from elsewhere
/// waits for a second one that is near it; then the source has restarted, or, where the timestamps went on
/// for as long as the numbers between them take, there was an outage. Not thread-safe.
class PlaceLine {
public:
    PlaceLine() : slots_(slotCount) {}

    /// A media packet of at least 12 bytes; `arrival` is 0 for one that is only known to have been sent.
    void add(ConstRtpPacketView media, std::uint64_t arrival);
    /// An FEC packet leaves its sender behind all the packets it protects, so it tells of some that never
    /// came.
    void name(ConstRtpPacketView fec);

    PlaceSlot& slot(Place place) { return slots_[static_cast<std::size_t>(place) % slotCount]; }
    /// Oldest first. Who has settled the oldest takes it off; the latest stays.
    std::deque<Stretch>& stretches() { return stretches_; }
    std::uint64_t restarts() const { return restarts_; }
    std::uint64_t outages() const { return outages_; }

private:
    struct Packet {
        std::uint16_t number;
        std::uint32_t timestamp;
        std::uint32_t ssrc;
        std::uint64_t arrival;
    };

    std::optional<Place> placeFor(const Packet& packet);
    bool contradicts(const Packet& packet, Place place);
    void take(const Packet& packet, Place place);
    void learnPace(const Packet& packet, Place place);
    void consider(const Packet& packet);
    void begin(const Packet& packet);
    std::optional<std::uint64_t> outageBefore(const Packet& packet) const;

    static constexpr std::size_t slotCount = 65536;

    std::vector<PlaceSlot> slots_;
    std::deque<Stretch> stretches_;
    std::optional<Packet> candidate_;  ///< for the first of another stretch
    std::uint32_t newestTimestamp_ = 0;
    double ticksApart_ = 0;  ///< of packets one behind the other, on average
    int ticksSeen_ = 0;
    std::uint64_t restarts_ = 0;
    std::uint64_t outages_ = 0;
};

}  // namespace mvrtpfec
