#include "guard/packet_ledger.h"

#include <algorithm>
#include <mutex>

#include "core/same_run.h"

namespace mvrtpfec {

namespace {

/// Stretches that wait for their first delivery, and deliveries that wait for their stretch.
constexpr std::size_t maxWaiting = 64;

}  // namespace

std::uint64_t PacketLedger::arrive(ConstRtpPacketView media) {
    const std::lock_guard lock(mutex_);
    add(media, ++arrivals_);
    return arrivals_;
}

void PacketLedger::expect(ConstRtpPacketView media) {
    const std::lock_guard lock(mutex_);
    allAreKnown_ = true;
    add(media, 0);
}

void PacketLedger::add(ConstRtpPacketView media, std::uint64_t arrival) {
    const auto& stretches = line_.stretches();
    const Place before = stretches.empty() ? 0 : stretches.back().origin;
    line_.add(media, arrival);
    if (stretches.back().origin == before) return;
    if (stretches.size() > maxWaiting) closeOldest();
    std::erase_if(pending_, [this](const Delivery& delivery) { return account(delivery); });
}

void PacketLedger::name(ConstRtpPacketView fec) {
    const std::lock_guard lock(mutex_);
    line_.name(fec);
}

/// A receiver may let out the first packet of a stretch before the second has come.
void PacketLedger::deliver(ConstRtpPacketView media, std::uint64_t asOf) {
    const std::lock_guard lock(mutex_);
    const Delivery delivery{media.sequenceNumber(), media.timestamp(), media.ssrc(), asOf};
    if (account(delivery)) return;
    pending_.push_back(delivery);
    if (pending_.size() > maxWaiting) pending_.pop_front();
}

bool PacketLedger::account(const Delivery& delivery) {
    Hit hit{};
    if (!find(delivery, hit)) return false;
    for (; hit.stretch > 0; --hit.stretch) closeOldest();
    Stretch& stretch = line_.stretches().front();
    if (!stretch.isOpen) open(stretch, hit.place);
    if (hit.place < stretch.next) return true;
    PlaceSlot& slot = line_.slot(hit.place);
    if (slot.place != hit.place) slot = {.place = hit.place};
    if (!slot.isDelivered) slot.isRebuilt = slot.arrival == 0 || slot.arrival > delivery.asOf;
    slot.isDelivered = true;
    stretch.delivered = std::max(stretch.delivered, hit.place);
    settleTo(stretch, stretch.delivered - slack_);
    return true;
}

/// Deliveries go from stretch to stretch and never back.
bool PacketLedger::find(const Delivery& delivery, Hit& hit) {
    const auto& stretches = line_.stretches();
    for (const auto fits : {&PacketLedger::hasCome, &PacketLedger::mayBeRebuilt})
        for (std::size_t i = 0; i < stretches.size() && (i == 0 || stretches[i].begun <= delivery.asOf);
             ++i) {
            const Stretch& stretch = stretches[i];
            const Place reference = stretch.isOpen ? stretch.delivered : stretch.origin;
            const Place place = stretch.placeOf(delivery.number, reference);
            const Place last = std::max(stretch.last, stretch.named);
            if (place < stretch.first - sameRun || place > last) continue;
            if (!(this->*fits)(stretch, place, delivery)) continue;
            hit = {i, place};
            return true;
        }
    return false;
}

bool PacketLedger::hasCome(const Stretch& stretch, Place place, const Delivery& delivery) {
    const PlaceSlot& slot = line_.slot(place);
    return slot.place == place && slot.arrival != 0 && slot.timestamp == delivery.timestamp &&
           stretch.ssrc == delivery.ssrc;
}

/// A packet rebuilt from a row of one has no SSRC.
bool PacketLedger::mayBeRebuilt(const Stretch& stretch, Place place, const Delivery& delivery) {
    const PlaceSlot& slot = line_.slot(place);
    const bool isFree = slot.place != place || (slot.arrival == 0 && !slot.isDelivered);
    return isFree && (!stretch.isOpen || place >= stretch.next) &&
           (delivery.ssrc == 0 || delivery.ssrc == stretch.ssrc);
}

void PacketLedger::closeOldest() {
    Stretch& oldest = line_.stretches().front();
    if (!oldest.isOpen && oldest.isConfirmed) open(oldest, oldest.first);
    if (oldest.isOpen) settleTo(oldest, std::max(oldest.last, oldest.delivered));
    line_.stretches().pop_front();
}

void PacketLedger::open(Stretch& stretch, Place first) {
    stretch.isOpen = true;
    stretch.next = std::min(stretch.first, first);
    stretch.delivered = stretch.next;
    if (stretch.lostBefore == 0) burst_ = 0;
    const auto earlier = static_cast<std::uint64_t>(stretch.origin - stretch.next);
    if (!allAreKnown_ && stretch.lostBefore > earlier)
        lose(stretch.lostBefore - earlier, figures_.lostForGood);
}

void PacketLedger::settleTo(Stretch& stretch, Place last) {
    for (; stretch.next <= last; ++stretch.next) settle(stretch.next);
}

void PacketLedger::settle(Place place) {
    const PlaceSlot& slot = line_.slot(place);
    const bool isOurs = slot.place == place;
    if (allAreKnown_ && !(isOurs && slot.isKnown)) return;
    if (!isOurs || !slot.isDelivered)
        lose(1, figures_.lostForGood);
    else if (slot.isRebuilt)
        lose(1, figures_.rebuilt);
    else
        burst_ = 0;
}

void PacketLedger::lose(std::uint64_t packets, std::uint64_t& kind) {
    kind += packets;
    burst_ += packets;
    figures_.longestBurst = std::max(figures_.longestBurst, burst_);
}

void PacketLedger::finish() {
    const std::lock_guard lock(mutex_);
    if (line_.stretches().empty()) return;
    Stretch& latest = line_.stretches().back();
    latest.last = std::max(latest.last, latest.named);
    while (!line_.stretches().empty()) closeOldest();
    pending_.clear();
}

LedgerFigures PacketLedger::figures() const {
    const std::lock_guard lock(mutex_);
    LedgerFigures figures = figures_;
    figures.restarts = line_.restarts();
    figures.outages = line_.outages();
    return figures;
}

}  // namespace mvrtpfec
