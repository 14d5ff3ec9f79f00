#include "guard/place_line.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "core/same_run.h"
#include "core/serial_distance.h"

namespace mvrtpfec {

namespace {

/// The first packets of a stretch may come out of order by fewer.
constexpr int nearBy = 20;
/// More than packets come late, so that those of one stretch never get places of another.
constexpr Place between = 4 * sameRun;
/// Packets whose timestamps make a mean.
constexpr int paceMemory = 64;
constexpr int cycle = 65536;
/// So many may be missing of a source that goes on (MAX_DROPOUT, RFC 3550 appendix A.1), though its
/// timestamps were set anew meanwhile; where these go on without a gap, the numbers alone have jumped.
constexpr int maxDropout = 3000;

}  // namespace

Place Stretch::placeOf(std::uint16_t number, Place reference) const {
    return reference + serialDistance(numberOf(reference), number);
}

void PlaceLine::add(ConstRtpPacketView media, std::uint64_t arrival) {
    const Packet packet{media.sequenceNumber(), media.timestamp(), media.ssrc(), arrival};
    if (stretches_.empty()) return begin(packet);
    if (const auto place = placeFor(packet))
        take(packet, *place);
    else
        consider(packet);
}

/// In the latest stretch, or late in one before it.
std::optional<Place> PlaceLine::placeFor(const Packet& packet) {
    for (auto stretch = stretches_.rbegin(); stretch != stretches_.rend(); ++stretch) {
        const Place place = stretch->placeOf(packet.number, stretch->last);
        const Place ahead = place - stretch->last;
        const Place furthest = stretch == stretches_.rbegin() ? sameRun : 0;
        if (packet.ssrc == stretch->ssrc && ahead <= furthest && ahead >= -sameRun &&
            !contradicts(packet, place))
            return place;
    }
    return std::nullopt;
}

/// Its number came with another timestamp: this is another run of the source.
bool PlaceLine::contradicts(const Packet& packet, Place place) {
    const PlaceSlot& seen = slot(place);
    return seen.place == place && seen.isKnown && seen.timestamp != packet.timestamp;
}

void PlaceLine::take(const Packet& packet, Place place) {
    Stretch& latest = stretches_.back();
    if (place > latest.origin - between) {
        candidate_.reset();
        learnPace(packet, place);
        if (place != latest.last) latest.isConfirmed = true;
        latest.last = std::max(latest.last, place);
    }
    PlaceSlot& seen = slot(place);
    if (seen.place != place) seen = {.place = place};
    if (seen.arrival == 0) seen.arrival = packet.arrival;
    seen.timestamp = packet.timestamp;
    seen.isKnown = true;
}

void PlaceLine::learnPace(const Packet& packet, Place place) {
    const Place ahead = place - stretches_.back().last;
    if (ahead <= 0) return;
    const auto ticks = static_cast<std::int32_t>(packet.timestamp - newestTimestamp_);
    newestTimestamp_ = packet.timestamp;
    if (ahead > 1 || ticks < 0) return;
    ticksSeen_ = std::min(ticksSeen_ + 1, paceMemory);
    ticksApart_ += (ticks - ticksApart_) / ticksSeen_;
}

void PlaceLine::consider(const Packet& packet) {
    const int ahead = candidate_ ? serialDistance(candidate_->number, packet.number) : 0;
    if (!candidate_ || candidate_->ssrc != packet.ssrc || std::abs(ahead) >= nearBy) {
        candidate_ = packet;
    } else if (ahead == 0) {
        if (candidate_->arrival == 0) candidate_->arrival = packet.arrival;
    } else {
        begin(*std::exchange(candidate_, std::nullopt));
        Stretch& fresh = stretches_.back();
        const Place place = fresh.placeOf(packet.number, fresh.origin);
        fresh.first = std::min(fresh.first, place);
        take(packet, place);
    }
}

/// A stretch that one packet had begun, and none has gone on with, was a stray's.
void PlaceLine::begin(const Packet& packet) {
    Stretch fresh{
        .ssrc = packet.ssrc, .origin = slotCount, .originNumber = packet.number, .begun = packet.arrival};
    if (!stretches_.empty()) {
        const bool goesOn = stretches_.back().isConfirmed;
        const auto outage = outageBefore(packet);
        fresh.origin = stretches_.back().last + between;
        fresh.lostBefore = outage.value_or(0);
        if (goesOn) ++(outage ? outages_ : restarts_);
        if (!goesOn && stretches_.size() == 1) stretches_.clear();
    }
    fresh.first = fresh.last = fresh.named = fresh.origin;
    fresh.isConfirmed = packet.arrival == 0;  // who knows what was sent knows no strays
    stretches_.push_back(fresh);
    newestTimestamp_ = packet.timestamp;
    take(packet, fresh.origin);
}

/// How many packets are missing before one whose number is from elsewhere; nothing when the source has jumped
/// to it. What a jump backwards looks like, an outage of more than half a cycle is believed only where the
/// timestamps fit well.
std::optional<std::uint64_t> PlaceLine::outageBefore(const Packet& packet) const {
    const Stretch& latest = stretches_.back();
    const double ticks = static_cast<std::int32_t>(packet.timestamp - newestTimestamp_);
    if (packet.ssrc != latest.ssrc || ticks <= 0 || ticksApart_ <= 0) return std::nullopt;
    const double expected = ticks / ticksApart_;
    const double ahead = static_cast<std::uint16_t>(packet.number - latest.numberOf(latest.last));
    const double cycles = std::max(0.0, std::round((expected - ahead) / cycle));
    const double packets = ahead + cycles * cycle;
    const bool fits = packets < cycle / 2
                          ? expected > packets / 2 && expected < packets * 2
                          : std::abs(expected - packets) < std::min(packets, 1.0 * cycle) / 16;
    if (!fits && (ahead > maxDropout || expected < nearBy)) return std::nullopt;
    return static_cast<std::uint64_t>(packets) - 1;
}

void PlaceLine::name(ConstRtpPacketView fec) {
    if (stretches_.empty()) return;
    Stretch& latest = stretches_.back();
    const ProtectedRange range = protectedRange(fec);
    const Place base = latest.placeOf(range.base, latest.last);
    const Place last = latest.placeOf(range.last, latest.last);
    if (base > latest.last || last - latest.last >= sameRun) return;
    const PlaceSlot& first = slot(base);
    if (first.place == base && first.isKnown && first.timestamp != fec.timestamp()) return;
    latest.named = std::max(latest.named, last);
}

}  // namespace mvrtpfec
