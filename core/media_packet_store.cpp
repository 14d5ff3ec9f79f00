#include "core/media_packet_store.h"

#include <exception>
#include <utility>

namespace mvrtpfec {

namespace {

constexpr std::uint32_t cycle = SequenceSet::end;

}  // namespace

std::unique_ptr<RtpPacket>& CMediaPacketStore::slot(std::uint16_t sequenceNumber) {
    std::unique_ptr<Page>& page = pages_[sequenceNumber / pageSize];
    if (!page) page = std::make_unique<Page>();
    return (*page)[sequenceNumber % pageSize];
}

const RtpPacket* CMediaPacketStore::find(std::uint16_t sequenceNumber) const {
    const std::unique_ptr<Page>& page = pages_[sequenceNumber / pageSize];
    return page ? (*page)[sequenceNumber % pageSize].get() : nullptr;
}

void CMediaPacketStore::Insert(std::unique_ptr<RtpPacket> packet) {
    const std::uint16_t s = packet->view.sequenceNumber();
    const bool follows = s == static_cast<std::uint16_t>(newestSeq_ + 1) && s != oldestSeq_;
    std::unique_ptr<RtpPacket>& place = slot(s);
    if (!follows || place || isMissing(s)) ++changes_;

    if (stored_.empty())
        oldestSeq_ = s;
    else if (!missing_.erase(s))
        markGap(s);
    place = std::move(packet);
    stored_.insert(s);
}

void CMediaPacketStore::markGap(std::uint16_t sequenceNumber) {
    const std::uint32_t newest = newestSeq_ < oldestSeq_ ? newestSeq_ + cycle : newestSeq_;
    const std::uint32_t first = newest + 1;
    const std::uint32_t last = sequenceNumber < oldestSeq_ ? sequenceNumber + cycle : sequenceNumber;
    if (first >= last) return;
    lostCount_ += last - first;
    if (first >= cycle) {
        missing_.insertRange(first - cycle, last - cycle);
    } else if (last <= cycle) {
        missing_.insertRange(first, last);
    } else {
        missing_.insertRange(first, cycle);
        missing_.insertRange(0, last - cycle);
    }
}

void CMediaPacketStore::markReceived(std::uint16_t sequenceNumber) {
    newestSeq_ = sequenceNumber;
    ++receivedCount_;
}

std::size_t CMediaPacketStore::advance(std::uint16_t target, const PacketCallback& onPacket) {
    if (target == oldestSeq_) return 0;
    if (target < oldestSeq_) {
        release(oldestSeq_, cycle, onPacket);
        oldestSeq_ = 0;
    }
    release(oldestSeq_, target, onPacket);
    oldestSeq_ = target;
    return PurgeMissing();
}

void CMediaPacketStore::release(std::uint32_t first, std::uint32_t last, const PacketCallback& onPacket) {
    for (std::uint32_t n = stored_.next(first); n < last; n = stored_.next(n + 1)) {
        const auto number = static_cast<std::uint16_t>(n);
        std::unique_ptr<RtpPacket>& place = slot(number);
        const std::unique_ptr<RtpPacket> packet = std::move(place);
        stored_.erase(number);
        try {
            onPacket(packet.get());
        } catch (const std::exception&) {
            // The packet is lost; the ones behind it are not.
        }
    }
}

std::size_t CMediaPacketStore::PurgeMissing() {
    if (missing_.empty() || oldestSeq_ == newestSeq_) return 0;
    const std::size_t purged = oldestSeq_ < newestSeq_ ? missing_.eraseRange(0, oldestSeq_)
                                                       : missing_.eraseRange(newestSeq_ + 1u, oldestSeq_);
    if (purged > 0) ++changes_;
    return purged;
}

}  // namespace mvrtpfec
