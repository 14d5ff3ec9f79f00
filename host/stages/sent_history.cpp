#include "host/stages/sent_history.h"

#include <algorithm>

namespace mvrtpfec {

void SentHistory::add(ConstRtpPacketView sent) {
    const std::lock_guard lock(mutex_);
    Slot& slot = slots_[sent.sequenceNumber() % size];
    slot.place = sent_++;
    slot.bytes.assign(sent.data, sent.data + sent.length);
}

void SentHistory::check(ConstRtpPacketView delivered) {
    const std::lock_guard lock(mutex_);
    const Slot& slot = slots_[delivered.sequenceNumber() % size];
    if (slot.place != checked_++) inOrder_ = false;
    if (!std::equal(slot.bytes.begin(), slot.bytes.end(), delivered.data, delivered.data + delivered.length))
        ++mismatched_;
}

}  // namespace mvrtpfec
