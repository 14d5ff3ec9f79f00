#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>

#include "core/rtp_packet.h"
#include "core/sequence_set.h"

namespace mvrtpfec {

/// Takes a look at a released packet; it does not own it.
using PacketCallback = std::function<void(RtpPacket*)>;

/// Media packets that wait for their release, by sequence number, and the numbers found missing.
class CMediaPacketStore {
public:
    /// Takes a received or rebuilt packet of at least 12 bytes in, replacing one of the same number.
    /// A number that was missing no longer is; otherwise the gap between the newest number and this
    /// one is marked missing. A number below the window start counts as a jump forward over the wrap.
    void Insert(std::unique_ptr<RtpPacket> packet);

    /// The packet just given to Insert came from an input.
    void markReceived(std::uint16_t sequenceNumber);

    /// Releases what lies before `target` in ascending order, makes `target` the window start and
    /// gives up missing numbers that fell out; returns how many.
    std::size_t advance(std::uint16_t target, const PacketCallback& onPacket);

    const RtpPacket* find(std::uint16_t sequenceNumber) const;
    bool isMissing(std::uint16_t sequenceNumber) const { return missing_.contains(sequenceNumber); }
    std::size_t missingCount() const { return missing_.size(); }

    std::uint16_t newestSeq() const { return newestSeq_; }
    std::uint16_t oldestSeq() const { return oldestSeq_; }
    std::uint64_t lostCount() const { return lostCount_; }
    std::uint64_t receivedCount() const { return receivedCount_; }

    /// Counts the changes that can alter what an FEC packet rebuilds from a group inside the window: all
    /// but a new packet just above the newest number, which no such group holds unless the window has
    /// come full circle and that number is its start.
    std::uint64_t changes() const { return changes_; }

private:
    static constexpr std::size_t pageSize = 256;
    using Page = std::array<std::unique_ptr<RtpPacket>, pageSize>;

    std::unique_ptr<RtpPacket>& slot(std::uint16_t sequenceNumber);
    void markGap(std::uint16_t sequenceNumber);
    void release(std::uint32_t first, std::uint32_t last, const PacketCallback& onPacket);
    std::size_t PurgeMissing();

    std::array<std::unique_ptr<Page>, SequenceSet::end / pageSize> pages_;
    SequenceSet stored_;
    SequenceSet missing_;
    std::uint16_t newestSeq_ = 0;  ///< last received from an input; a late packet moves it back
    std::uint16_t oldestSeq_ = 0;  ///< window start: what lies below has been released
    std::uint64_t lostCount_ = 0;
    std::uint64_t receivedCount_ = 0;
    std::uint64_t changes_ = 0;
};

}  // namespace mvrtpfec
