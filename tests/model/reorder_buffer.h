#pragma once

#include <cstdint>
#include <list>
#include <optional>

namespace mvrtpfec::model {

/// The reorder buffer over items that are nothing but their sequence numbers, so that the order of equal
/// ones, which is nobody's to define, can't show.
class ReorderBuffer {
public:
    ReorderBuffer(std::int32_t capacity, std::int32_t maxSequenceNumber);

    void push(std::int32_t sequenceNumber);
    std::optional<std::int32_t> pop();
    void clear();

    /// Numbers that made the buffer start afresh, the first one not counted.
    int resynchronisations() const { return resynchronisations_; }
    int overflows() const { return overflows_; }
    int wraps() const { return wraps_; }

private:
    struct Entry {
        std::int64_t key;
        std::int32_t sequenceNumber;
    };

    std::int64_t extend(std::int32_t sequenceNumber);

    std::list<Entry> entries_;  ///< descending keys
    std::int32_t maxSequenceNumber_;
    std::int32_t capacity_;
    std::int64_t lastKey_ = -1;
    std::int32_t wrapCount_ = 0;
    std::int64_t referenceKey_ = -1;
    int resynchronisations_ = 0;
    int overflows_ = 0;
    int wraps_ = 0;
};

}  // namespace mvrtpfec::model
