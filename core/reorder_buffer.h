#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace mvrtpfec {

/// What a receiver's inputs are ordered with.
inline constexpr std::int32_t receiverReorderCapacity = 20;
inline constexpr std::int32_t maxRtpSequenceNumber = 65535;

/// Puts items that carry wrapping sequence numbers back into consecutive order.
///
/// An item is released only when its number follows the one released last, or when none has been
/// released since the last reset. The buffer never waits for time: it gives up a missing number only
/// when it runs full (dropping the oldest item that waits, not the hole), and starts afresh when a
/// number lies more than 2 x capacity away. What it drops is dropped silently.
///
/// Items may be such as can only be moved. Not thread-safe. No allocation after construction.
template <class T>
class CRtpPacketReorderBuffer {
public:
    using KeyFunction = std::function<std::int32_t(const T&)>;

    /// Throws std::runtime_error when `capacity` is below 1 or above half of `maxSequenceNumber`.
    CRtpPacketReorderBuffer(std::int32_t capacity, std::int32_t maxSequenceNumber, KeyFunction keyOf)
        : maxSequenceNumber_(maxSequenceNumber), capacity_(capacity), keyOf_(std::move(keyOf)) {
        if (capacity < 1 || maxSequenceNumber / 2 < capacity)
            throw std::runtime_error(
                "Packet reorder buffer size must be less than half the max sequence number");
        entries_.reserve(static_cast<std::size_t>(capacity));
    }

    /// Takes an item in. Throws std::runtime_error for a number above the maximum and
    /// std::bad_function_call without a key function; a full buffer has dropped an item by then.
    void Push(T item) {
        if (entries_.size() == static_cast<std::size_t>(capacity_)) {
            entries_.pop_back();
            lastKey_ = none;
        }
        const std::int32_t sequenceNumber = keyOf_(item);
        if (sequenceNumber > maxSequenceNumber_)
            throw std::runtime_error("Invalid sequence number : " + std::to_string(sequenceNumber) +
                                     ". Max allowed : " + std::to_string(maxSequenceNumber_));
        const std::int64_t key = ExtendSequenceNumber(sequenceNumber);
        insert({key, std::move(item)});
        referenceKey_ = entries_.back().key;
    }

    /// Moves the item that is due into `slot`; false when none is.
    bool Pop(T& slot) {
        if (entries_.empty()) return false;
        Entry& smallest = entries_.back();
        if (lastKey_ != none && smallest.key - lastKey_ != 1) return false;
        lastKey_ = smallest.key;
        slot = std::move(smallest.item);
        entries_.pop_back();
        return true;
    }

    /// Drops all items and forgets every number seen.
    void Clear() {
        entries_.clear();
        lastKey_ = none;
        referenceKey_ = none;
        wrapCount_ = 0;
    }

private:
    struct Entry {
        std::int64_t key;
        T item;
    };

    static constexpr std::int64_t none = -1;

    std::int64_t ExtendSequenceNumber(std::int32_t sequenceNumber) {
        const std::int64_t window = std::int64_t{2} * capacity_;
        const std::int64_t modulus = std::int64_t{maxSequenceNumber_} + 1;
        const bool lowReference = referenceKey_ % modulus < window;
        if (sequenceNumber < window && !lowReference) ++wrapCount_;

        std::int64_t key = modulus * wrapCount_ + sequenceNumber;
        if (sequenceNumber > maxSequenceNumber_ - window && lowReference)
            key = previousCycle(modulus) + sequenceNumber;

        const std::int64_t distance = key > referenceKey_ ? key - referenceKey_ : referenceKey_ - key;
        if (distance <= window) return key;
        Clear();
        return sequenceNumber;
    }

    /// The product wraps in 32 bits: after 32768 wraps a number from before a wrap starts the buffer afresh.
    std::int64_t previousCycle(std::int64_t modulus) const {
        const auto product =
            static_cast<std::uint32_t>(modulus) * (static_cast<std::uint32_t>(wrapCount_) - 1u);
        return static_cast<std::int32_t>(product);
    }

    /// Keeps the entries in descending order of their keys, so that the next one due is the last.
    void insert(Entry entry) {
        auto at = entries_.end();
        while (at != entries_.begin() && (at - 1)->key < entry.key) --at;
        entries_.insert(at, std::move(entry));
    }

    std::vector<Entry> entries_;
    std::int32_t maxSequenceNumber_;
    std::int32_t capacity_;
    std::int64_t lastKey_ = none;
    std::int32_t wrapCount_ = 0;
    KeyFunction keyOf_;
    std::int64_t referenceKey_ = none;
};

}  // namespace mvrtpfec
