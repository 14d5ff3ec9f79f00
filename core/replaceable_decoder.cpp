#include "core/replaceable_decoder.h"

#include <utility>

namespace mvrtpfec {

void ReplaceableDecoder::begin() {
    if (current_) current_->counts = false;
    past_ = {};
    inRun_ = true;
    replace();
}

void ReplaceableDecoder::end() {
    retire();
    inRun_ = false;
}

void ReplaceableDecoder::provide() {
    if (!current_) replace();
}

void ReplaceableDecoder::feed(const std::uint8_t* bytes, std::size_t length) {
    provide();
    if (FAILED(current_->decoder.Feed(bytes, length))) replaceRejecting();
}

void ReplaceableDecoder::feed(std::unique_ptr<RtpPacket> packet) {
    provide();
    if (FAILED(current_->decoder.Feed(std::move(packet)))) replaceRejecting();
}

/// What the old decoder still holds is released while the new one waits.
void ReplaceableDecoder::replace() {
    auto fresh = std::make_unique<Counted>(onPacket_, inRun_);
    retire();
    current_ = std::move(fresh);
}

void ReplaceableDecoder::retire() {
    past_ = totals();
    current_.reset();
}

void ReplaceableDecoder::replaceRejecting() {
    const bool counts = current_->counts;
    replace();
    if (counts) ++past_.resets;
}

FecTotals ReplaceableDecoder::totals() const {
    FecTotals sums = past_;
    if (!current_ || !current_->counts) return sums;
    const CFecDecoder& decoder = current_->decoder;
    sums.received += decoder.receivedCount();
    sums.lost += decoder.lostCount();
    sums.rebuilt += decoder.rebuiltCount();
    sums.abandoned += decoder.abandonedCount();
    return sums;
}

}  // namespace mvrtpfec
