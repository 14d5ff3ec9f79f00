#include "tests/model/fec_decoder.h"

#include <exception>
#include <utility>
#include <vector>

namespace mvrtpfec::model {

namespace {

constexpr std::size_t mostKept = 1024;

std::uint16_t modulo16(std::uint32_t number) {
    return static_cast<std::uint16_t>(number % 65536);
}

bool isRow(const Packet& fec) {
    return (fec.buffer.at(24) & 0x40) != 0;
}

}  // namespace

void Events::add(const Events& other) {
    rebuiltOnArrival += other.rebuiltOnArrival;
    rebuiltInPass += other.rebuiltInPass;
    seedsAlone += other.seedsAlone;
    carriedFec += other.carriedFec;
    invalidCandidates += other.invalidCandidates;
    overlongSources += other.overlongSources;
    emptyOffsets += other.emptyOffsets;
    secondLosses += other.secondLosses;
    windowWraps += other.windowWraps;
    tooManyMissing += other.tooManyMissing;
    tooManyKept += other.tooManyKept;
    contradictions += other.contradictions;
    foreign += other.foreign;
    truncated += other.truncated;
}

FecDecoder::FecDecoder(OnPacket onPacket) : onPacket_(std::move(onPacket)) {}

void FecDecoder::destroy() {
    advance(65535);
}

FecDecoder::Group FecDecoder::protectedRange(const Packet& fec) {
    Group group;
    group.first = fec.read16(12);
    group.offset = fec.buffer.at(25);
    group.count = fec.buffer.at(26);
    group.last =
        modulo16(65536u + group.first + static_cast<std::uint32_t>((group.count - 1) * group.offset));
    return group;
}

std::set<std::uint16_t> FecDecoder::numbersOf(const Group& group) {
    std::set<std::uint16_t> numbers;
    for (std::uint32_t k = 0; k < group.count; ++k) numbers.insert(modulo16(group.first + k * group.offset));
    return numbers;
}

std::uint16_t FecDecoder::windowSize() const {
    return modulo16(static_cast<std::uint32_t>(2 * columns_ * rows_));
}

HRESULT FecDecoder::feed(const Bytes& bytes) {
    const Packet packet(bytes);
    if (packet.isTruncated()) {
        ++events_.truncated;
        return E_FAIL;
    }
    if (packet.payloadType() == 96) return feedFec(packet);
    if (packet.payloadType() == 33) return feedMedia(packet);
    ++events_.foreign;
    return E_FAIL;
}

bool FecDecoder::learnMatrix(const Packet& fec) {
    const Group group = protectedRange(fec);
    if (!isRow(fec) && columnsPending_) {
        rows_ = group.count;
        columns_ = group.offset;
        columnsPending_ = false;
    }
    if (isRow(fec) && rowsPending_) {
        columns_ = group.count;
        rowsPending_ = false;
    }
    return group.count == (isRow(fec) ? columns_ : rows_);
}

HRESULT FecDecoder::feedFec(const Packet& fec) {
    if (!learnMatrix(fec)) {
        ++events_.contradictions;
        return E_FAIL;
    }
    if (!insertFecPacket(fec)) {
        ++events_.tooManyKept;
        return E_FAIL;
    }
    return moveWindow();
}

HRESULT FecDecoder::feedMedia(const Packet& media) {
    insert(media);
    ++receivedCount_;
    newestSeq_ = media.sequenceNumber();
    if (windowSize() < missing_.size()) {
        ++events_.tooManyMissing;
        return E_FAIL;
    }
    return moveWindow();
}

HRESULT FecDecoder::moveWindow() {
    if (modulo16(65536u + newestSeq_ - oldestSeq_) >= windowSize()) {
        runRecoveryPass();
        advance(modulo16(65536u + newestSeq_ - windowSize()));
    }
    return S_OK;
}

void FecDecoder::insert(const Packet& packet) {
    const std::uint16_t s = packet.sequenceNumber();
    if (packets_.empty()) {
        oldestSeq_ = s;
    } else if (missing_.contains(s)) {
        missing_.erase(s);
    } else {
        const std::uint32_t unfolded = s < oldestSeq_ ? s + 65536u : s;
        const std::uint32_t newest = newestSeq_ < oldestSeq_ ? newestSeq_ + 65536u : newestSeq_;
        for (std::uint32_t number = newest + 1; number < unfolded; ++number) {
            missing_.insert(modulo16(number));
            ++lostCount_;
        }
    }
    packets_[s] = packet;
}

bool FecDecoder::insertFecPacket(const Packet& fec) {
    const Recovery recovery = tryRecover(fec);
    if (recovery.packet) {
        insert(*recovery.packet);
        ++rebuiltCount_;
        ++events_.rebuiltOnArrival;
    } else if (recovery.keep) {
        if (fecPackets_.size() == mostKept) return false;
        fecPackets_.push_back(fec);
    }
    return true;
}

FecDecoder::Recovery FecDecoder::tryRecover(const Packet& fec) {
    const Group group = protectedRange(fec);
    std::uint32_t first = group.first;
    std::uint32_t last = group.first > group.last ? group.last + 65536u : group.last;
    std::uint32_t newest = newestSeq_ < oldestSeq_ ? newestSeq_ + 65536u : newestSeq_;
    std::uint32_t oldest = oldestSeq_;
    if (newest / 65536 < last / 65536) {
        oldest += 65536;
        newest += 65536;
    } else if (newest / 65536 > last / 65536) {
        first += 65536;
        last += 65536;
    }
    if (first < oldest) return {std::nullopt, false};
    if (last > newest) return {std::nullopt, true};

    // Ascending, so the first one found is the smallest missing number of the group.
    for (const std::uint16_t number : numbersOf(group)) {
        if (missing_.contains(number)) return {recoverPacket(number, fec), true};
    }
    return {std::nullopt, false};
}

Packet FecDecoder::seedFrom(const Packet& fec, std::uint16_t missing) {
    Packet candidate(fec.wireBytes());
    const std::uint8_t payloadTypeRecovery = fec.buffer.at(16) & 0x7f;
    candidate.length = fec.read16(14);
    candidate.buffer.at(0) = fec.padding() ? 0xa0 : 0x80;
    candidate.buffer.at(1) = static_cast<std::uint8_t>((fec.marker() ? 0x80 : 0) + payloadTypeRecovery);
    candidate.write16(2, missing);
    candidate.write16(4, fec.read16(20));
    candidate.write16(6, fec.read16(22));
    candidate.write16(8, 0);
    candidate.write16(10, 0);
    const std::size_t destination = payloadTypeRecovery == 96 ? 28 : 12;
    for (std::size_t i = 0; i < fec.length - 28u; ++i)
        candidate.buffer.at(destination + i) = fec.buffer.at(28 + i);
    return candidate;
}

bool FecDecoder::combine(Packet& candidate, const Packet& source) {
    candidate.length ^= source.length;
    if (source.padding()) candidate.buffer.at(0) ^= 0x20;
    if (source.marker()) candidate.buffer.at(1) ^= 0x80;
    candidate.buffer.at(1) ^= source.payloadType();
    for (std::size_t i = 4; i < 8; ++i) candidate.buffer.at(i) ^= source.buffer.at(i);
    for (std::size_t i = 8; i < 12; ++i) candidate.buffer.at(i) = source.buffer.at(i);

    const std::size_t destination = candidate.payloadOffset();
    const std::size_t count = source.payloadLength();
    if (destination + count > candidate.buffer.size()) {
        ++events_.overlongSources;
        return false;
    }
    for (std::size_t i = 0; i < count; ++i)
        candidate.buffer.at(destination + i) ^= source.buffer.at(source.payloadOffset() + i);
    return true;
}

std::optional<Packet> FecDecoder::recoverPacket(std::uint16_t missing, const Packet& fec) {
    const Group group = protectedRange(fec);
    if (group.offset == 0) {
        ++events_.emptyOffsets;
        return std::nullopt;
    }
    Packet candidate = seedFrom(fec, missing);
    for (std::uint32_t n = group.first; n <= group.last; n += group.offset) {
        if (n == missing) continue;
        const auto found = packets_.find(modulo16(n));
        if (found == packets_.end()) {
            ++events_.secondLosses;
            return std::nullopt;
        }
        if (!combine(candidate, found->second)) return std::nullopt;
    }
    if (!candidate.isValid()) {
        ++events_.invalidCandidates;
        return std::nullopt;
    }
    if (group.first > group.last) ++events_.seedsAlone;
    if (candidate.payloadType() == 96) ++events_.carriedFec;
    candidate.buffer.resize(candidate.length);
    return candidate;
}

void FecDecoder::runRecoveryPass() {
    for (auto fec = fecPackets_.begin(); fec != fecPackets_.end();) {
        const Recovery recovery = tryRecover(*fec);
        if (recovery.packet) {
            insert(*recovery.packet);
            ++rebuiltCount_;
            ++events_.rebuiltInPass;
            fec = fecPackets_.erase(fec);
        } else if (recovery.keep) {
            ++fec;
        } else {
            fec = fecPackets_.erase(fec);
        }
    }
}

void FecDecoder::advance(std::uint16_t target) {
    if (target == oldestSeq_) return;
    if (target < oldestSeq_) {
        releaseUpTo(65536);
        oldestSeq_ = 0;
        ++events_.windowWraps;
    }
    releaseUpTo(target);
    oldestSeq_ = target;
    abandonedCount_ += purgeMissing();
}

void FecDecoder::releaseUpTo(std::uint32_t end) {
    std::vector<std::uint16_t> due;
    for (const auto& [number, packet] : packets_) {
        if (number >= oldestSeq_ && number < end) due.push_back(number);
    }
    for (const std::uint16_t number : due) {
        try {
            onPacket_(packets_.at(number));
        } catch (const std::exception&) {
            // The packet is lost, and nothing else.
        }
        packets_.erase(number);
    }
}

std::uint64_t FecDecoder::purgeMissing() {
    return std::erase_if(missing_, [this](std::uint16_t number) {
        if (oldestSeq_ < newestSeq_) return number < oldestSeq_;
        if (oldestSeq_ > newestSeq_) return number > newestSeq_ && number < oldestSeq_;
        return false;
    });
}

}  // namespace mvrtpfec::model
