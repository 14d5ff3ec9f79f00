#include "host/stages/sent_history.h"

#include <algorithm>

namespace mvrtpfec {

void SentHistory::add(ConstRtpPacketView sent) {
    Slot& slot = slots_[sent.sequenceNumber() % size];
    slot.place = sent_++;
    slot.bytes.assign(sent.data, sent.data + sent.length);
}

void SentHistory::check(ConstRtpPacketView delivered) {
    const Slot& slot = slots_[delivered.sequenceNumber() % size];
    if (slot.place != checked_++) inOrder_ = false;
    if (!std::equal(slot.bytes.begin(), slot.bytes.end(), delivered.data, delivered.data + delivered.length))
        ++mismatched_;
}

}  // namespace mvrtpfec
