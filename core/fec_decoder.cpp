#include "core/fec_decoder.h"

#include <algorithm>
#include <utility>

#include "core/packet_recovery.h"

namespace mvrtpfec {

namespace {

constexpr std::uint32_t cycle = SequenceSet::end;

}  // namespace

CFecDecoder::CFecDecoder(PacketCallback onPacket) : onPacket_(std::move(onPacket)) {}

CFecDecoder::~CFecDecoder() {
    Advance(cycle - 1);
}

HRESULT CFecDecoder::Feed(const std::uint8_t* bytes, std::size_t length) {
    return feed({bytes, static_cast<std::uint16_t>(length)},
                [&] { return std::make_unique<RtpPacket>(bytes, length); });
}

HRESULT CFecDecoder::Feed(std::unique_ptr<RtpPacket> packet) {
    return feed(packet->view, [&] { return std::move(packet); });
}

/// A packet is made of the bytes only where it is kept.
template <class MakePacket>
HRESULT CFecDecoder::feed(ConstRtpPacketView packet, MakePacket makePacket) {
    if (packet.length < rtpHeaderSize) return E_FAIL;

    HRESULT result = E_FAIL;
    if (packet.payloadType() == fecPayloadType)
        result = feedFec(packet, makePacket);
    else if (packet.payloadType() == mediaPayloadType)
        result = feedMedia(makePacket());
    if (SUCCEEDED(result)) moveWindow();
    return result;
}

template <class MakePacket>
HRESULT CFecDecoder::feedFec(ConstRtpPacketView fec, MakePacket makePacket) {
    if (fec.length < fecPayloadOffset) return E_FAIL;
    const ProtectedRange range = protectedRange(fec);
    if (!learnMatrix(fecKind(fec), range)) return E_FAIL;
    return InsertFecPacket(fec, range, makePacket);
}

HRESULT CFecDecoder::feedMedia(std::unique_ptr<RtpPacket> packet) {
    const std::uint16_t sequenceNumber = packet->view.sequenceNumber();
    store_.Insert(std::move(packet));
    store_.markReceived(sequenceNumber);
    return windowSize() < store_.missingCount() ? E_FAIL : S_OK;
}

bool CFecDecoder::learnMatrix(FecKind kind, const ProtectedRange& range) {
    if (kind == FecKind::column) {
        if (columnsPending_) {
            rows_ = range.count;
            columns_ = range.offset;
            columnsPending_ = false;
        }
        return range.count == rows_;
    }
    if (rowsPending_) {
        columns_ = range.count;
        rowsPending_ = false;
    }
    return range.count == columns_;
}

template <class MakePacket>
HRESULT CFecDecoder::InsertFecPacket(ConstRtpPacketView fec, const ProtectedRange& range,
                                     MakePacket makePacket) {
    std::uint64_t searchedAt = neverSearched;
    Recovery recovery = TryRecover(fec, range, place(range), searchedAt);
    if (recovery.rebuilt) {
        insertRebuilt(std::move(recovery.rebuilt));
    } else if (recovery.keep) {
        if (fecPackets_.size() == maxKeptFecPackets) return E_FAIL;
        fecPackets_.push_back({makePacket(), range, searchedAt});
        calm_.valid = false;
    }
    return S_OK;
}

void CFecDecoder::insertRebuilt(std::unique_ptr<RtpPacket> packet) {
    store_.Insert(std::move(packet));
    ++rebuiltCount_;
}

CFecDecoder::Placement CFecDecoder::place(const ProtectedRange& range) const {
    std::uint32_t first = range.base;
    std::uint32_t last = range.base > range.last ? range.last + cycle : range.last;
    std::uint32_t oldest = store_.oldestSeq();
    std::uint32_t newest = store_.newestSeq() < oldest ? store_.newestSeq() + cycle : store_.newestSeq();

    if (newest / cycle < last / cycle) {
        oldest += cycle;
        newest += cycle;
    } else if (newest / cycle > last / cycle) {
        first += cycle;
        last += cycle;
    }

    Placement placement;
    if (first < oldest) {
        placement.begunBeforeWindow = true;
        return placement;
    }
    placement.stepsToLeave = first - oldest + 1;
    placement.complete = last <= newest;
    if (!placement.complete) placement.stepsToComplete = last - newest;
    return placement;
}

CFecDecoder::Recovery CFecDecoder::TryRecover(ConstRtpPacketView fec, const ProtectedRange& range,
                                              const Placement& placement, std::uint64_t& searchedAt) const {
    if (placement.begunBeforeWindow) return {};
    if (!placement.complete || searchedAt == store_.changes()) return {nullptr, true};
    searchedAt = store_.changes();
    return searchGroup(fec, range);
}

CFecDecoder::Recovery CFecDecoder::searchGroup(ConstRtpPacketView fec, const ProtectedRange& range) const {
    // Of the group's missing numbers only the smallest is tried.
    std::uint32_t smallest = cycle;
    std::uint16_t number = range.base;
    for (unsigned k = 0; k < range.count; ++k, number = static_cast<std::uint16_t>(number + range.offset)) {
        if (store_.isMissing(number)) smallest = std::min<std::uint32_t>(smallest, number);
    }
    if (smallest == cycle) return {};
    return {RecoverPacket(static_cast<std::uint16_t>(smallest), fec, range, store_), true};
}

std::uint16_t CFecDecoder::windowSize() const {
    return static_cast<std::uint16_t>(2 * columns_ * rows_);
}

void CFecDecoder::moveWindow() {
    const std::uint16_t newest = store_.newestSeq();
    if (static_cast<std::uint16_t>(newest - store_.oldestSeq()) < windowSize()) return;
    if (!isCalm()) RunRecoveryPass();
    Advance(static_cast<std::uint16_t>(newest - windowSize()));
}

bool CFecDecoder::isCalm() const {
    if (fecPackets_.empty()) return true;
    const std::uint16_t newest = store_.newestSeq();
    const std::uint16_t oldest = store_.oldestSeq();
    const bool sameFold = (newest < oldest) == (calm_.newest < calm_.oldest);
    return calm_.valid && calm_.changes == store_.changes() && sameFold && newest >= calm_.newest &&
           oldest >= calm_.oldest && newest - calm_.newest < static_cast<std::int64_t>(calm_.newestSteps) &&
           oldest - calm_.oldest < static_cast<std::int64_t>(calm_.oldestSteps);
}

void CFecDecoder::RunRecoveryPass() {
    calm_ = {false, store_.changes(), store_.newestSeq(), store_.oldestSeq(), cycle, cycle};
    auto stays = fecPackets_.begin();
    for (KeptFecPacket& kept : fecPackets_) {
        if (isDone(kept)) continue;
        // Swapped, not moved: should memory run out in the middle, every entry is still whole.
        std::swap(*stays, kept);
        ++stays;
    }
    fecPackets_.erase(stays, fecPackets_.end());
    calm_.valid = true;
}

bool CFecDecoder::isDone(KeptFecPacket& kept) {
    const Placement placement = place(kept.range);
    Recovery recovery = TryRecover(kept.packet->view, kept.range, placement, kept.searchedAt);
    if (recovery.rebuilt) {
        insertRebuilt(std::move(recovery.rebuilt));
        return true;
    }
    if (!recovery.keep) return true;
    calm_.oldestSteps = std::min(calm_.oldestSteps, placement.stepsToLeave);
    if (!placement.complete) calm_.newestSteps = std::min(calm_.newestSteps, placement.stepsToComplete);
    return false;
}

void CFecDecoder::Advance(std::uint16_t target) {
    abandonedCount_ += store_.advance(target, onPacket_);
}

}  // namespace mvrtpfec
