#include "host/io/ts_framer.h"

#include <algorithm>
#include <array>

namespace mvrtpfec {

namespace {

constexpr std::size_t prefixedDistance = 192;
constexpr std::size_t prefixSize = prefixedDistance - tsPacketSize;
constexpr std::array<std::size_t, 3> distances{tsPacketSize, prefixedDistance, 204};
constexpr std::size_t believed = 5;
/// What has been used is let go of in steps of so much.
constexpr std::size_t usedLimit = 16384;

/// Sync bytes that a run has at the end of a stream: fewer where the stream's first one should be.
std::size_t leastAtEnd(std::uint64_t position, std::size_t distance) {
    if (position == 0 && distance == tsPacketSize) return 1;
    return position == (distance == prefixedDistance ? prefixSize : 0) ? 2 : 3;
}

}  // namespace

void TsFramer::push(std::span<const std::uint8_t> bytes) {
    const std::size_t used = bytes_.size() - held();
    if (used == bytes_.size() || used >= usedLimit) {
        bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(used));
        at_ -= used;
        base_ += used;
    }
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

std::optional<TsPacket> TsFramer::next() {
    while (find() && held() >= tsPacketSize) {
        const Answer whole = isWhole();
        if (whole == Answer::yes) return take();
        if (whole == Answer::open) return std::nullopt;
        lose();
    }
    if (atEnd_) skipRest();
    return std::nullopt;
}

TsFramer::Answer TsFramer::isRun(std::size_t at, std::size_t distance, std::size_t leastAtEnd) const {
    for (std::size_t i = 0; i < believed; ++i, at += distance) {
        if (at >= bytes_.size() && !atEnd_) return Answer::open;
        if (at >= bytes_.size()) return i >= leastAtEnd ? Answer::yes : Answer::no;
        if (!isSyncAt(at)) return Answer::no;
    }
    return Answer::yes;
}

TsFramer::Answer TsFramer::beginsRun(std::size_t at, std::size_t& distance) const {
    if (!isSyncAt(at)) return Answer::no;
    for (const std::size_t candidate : distances) {
        const Answer answer = isRun(at, candidate, leastAtEnd(base_ + at, candidate));
        distance = candidate;
        if (answer != Answer::no) return answer;
    }
    return Answer::no;
}

TsFramer::Answer TsFramer::isWhole() const {
    if (!isSyncAt(at_)) return Answer::no;
    const std::size_t following = at_ + distance_;
    if (following >= bytes_.size() || isSyncAt(following)) return Answer::yes;
    const Answer keepsStep = isRun(following + distance_, distance_, 0);
    if (keepsStep != Answer::no) return keepsStep;
    if (pieces_ == Pieces::someMissing) return Answer::no;
    const Answer cut = isCut();
    if (cut == Answer::open) return cut;
    return cut == Answer::yes ? Answer::no : Answer::yes;
}

/// Whether the packets go on inside this one.
TsFramer::Answer TsFramer::isCut() const {
    std::size_t ignored = 0;
    const std::size_t end = std::min(at_ + tsPacketSize, bytes_.size());
    for (std::size_t at = at_ + 1; at < end; ++at) {
        const Answer answer = beginsRun(at, ignored);
        if (answer != Answer::no) return answer;
    }
    return Answer::no;
}

bool TsFramer::find() {
    return distance_ != 0 || search();
}

bool TsFramer::search() {
    if (lostDistance_ != 0) {
        const Answer answer = isRun(at_ + lostDistance_, lostDistance_, 0);
        if (answer == Answer::open) return false;
        if (answer == Answer::yes) {
            keepStep();
            return true;
        }
        lostDistance_ = 0;
    }
    for (; at_ < bytes_.size(); ++at_) {
        std::size_t distance = 0;
        const Answer answer = beginsRun(at_, distance);
        if (answer == Answer::open) return false;
        if (answer == Answer::no) continue;
        lock(distance);
        return true;
    }
    return false;
}

void TsFramer::keepStep() {
    at_ += lostDistance_;
    lock(lostDistance_);
}

void TsFramer::lose() {
    lostAt_ = position();
    if (isSyncAt(at_))
        ++at_;
    else
        lostDistance_ = distance_;
    distance_ = 0;
}

void TsFramer::skipRest() {
    if (distance_ != 0) lostAt_ = position();
    at_ = std::max(at_, bytes_.size());
    lock(0);
    lostAt_ = position();
}

void TsFramer::lock(std::size_t distance) {
    std::uint64_t count = position() - lostAt_;
    if (lostAt_ == 0 && distance == prefixedDistance) count -= std::min<std::uint64_t>(count, prefixSize);
    distance_ = distance;
    lostDistance_ = 0;
    if (count > 0) onSkipped_(lostAt_, count);
}

TsPacket TsFramer::take() {
    TsPacket packet;
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(at_), tsPacketSize, packet.bytes.begin());
    at_ += distance_;
    return packet;
}

std::size_t transportPacketDistance(std::span<const std::uint8_t> bytes) {
    TsFramer framer([](std::uint64_t, std::uint64_t) {});
    framer.push(bytes);
    if (bytes.size() < TsFramer::lookAhead) framer.end();
    return framer.next() ? framer.distance() : 0;
}

}  // namespace mvrtpfec
