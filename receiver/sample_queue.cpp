#include "receiver/sample_queue.h"

#include <utility>

namespace mvrtpfec {

void SampleQueue::append(Entry entry) {
    const CAutoLock lock(&lock_);
    entries_.push_back(std::move(entry));
    semaphore_.Release();
}

std::optional<SampleQueue::Entry> SampleQueue::takeFront() {
    const CAutoLock lock(&lock_);
    return takeFrontLocked();
}

std::optional<SampleQueue::Entry> SampleQueue::takeFrontLocked() {
    if (entries_.empty()) return std::nullopt;
    std::optional<Entry> front(std::move(entries_.front()));
    entries_.pop_front();
    return front;
}

void SampleQueue::drain() {
    for (bool taken = true; taken;) {
        // Released without the lock.
        std::optional<Entry> front;
        const CAutoLock lock(&lock_);
        taken = WaitForSingleObject(semaphore_, 0) == WAIT_OBJECT_0;
        if (taken) front = takeFrontLocked();
    }
}

}  // namespace mvrtpfec
