#include "tests/model/reorder_buffer.h"

#include <cstdlib>

namespace mvrtpfec::model {

ReorderBuffer::ReorderBuffer(std::int32_t capacity, std::int32_t maxSequenceNumber)
    : maxSequenceNumber_(maxSequenceNumber), capacity_(capacity) {}

void ReorderBuffer::push(std::int32_t sequenceNumber) {
    if (entries_.size() == static_cast<std::size_t>(capacity_)) {
        entries_.pop_back();
        lastKey_ = -1;
        ++overflows_;
    }
    const std::int64_t key = extend(sequenceNumber);
    entries_.push_back({key, sequenceNumber});
    entries_.sort([](const Entry& a, const Entry& b) { return a.key > b.key; });
    referenceKey_ = entries_.back().key;
}

std::int64_t ReorderBuffer::extend(std::int32_t sequenceNumber) {
    const std::int64_t window = 2 * std::int64_t{capacity_};
    const std::int64_t modulus = std::int64_t{maxSequenceNumber_} + 1;
    const std::int64_t remainder = referenceKey_ % modulus;
    const bool lowReference = remainder < window;

    if (sequenceNumber < window && !lowReference) {
        ++wrapCount_;
        ++wraps_;
    }
    std::int64_t key;
    if (sequenceNumber > maxSequenceNumber_ - window && lowReference)
        key = modulus * (wrapCount_ - 1) + sequenceNumber;
    else
        key = modulus * wrapCount_ + sequenceNumber;

    if (std::llabs(key - referenceKey_) <= window) return key;
    if (referenceKey_ != -1) ++resynchronisations_;
    clear();
    return sequenceNumber;
}

std::optional<std::int32_t> ReorderBuffer::pop() {
    if (entries_.empty()) return std::nullopt;
    const Entry last = entries_.back();
    if (lastKey_ != -1 && last.key - lastKey_ != 1) return std::nullopt;
    entries_.pop_back();
    lastKey_ = last.key;
    return last.sequenceNumber;
}

void ReorderBuffer::clear() {
    entries_.clear();
    lastKey_ = -1;
    referenceKey_ = -1;
    wrapCount_ = 0;
}

}  // namespace mvrtpfec::model
