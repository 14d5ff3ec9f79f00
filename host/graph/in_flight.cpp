#include "host/graph/in_flight.h"

namespace mvrtpfec {

namespace {

constexpr std::int32_t maxSequenceNumber = 65535;

auto makeMirror() {
    return CRtpPacketReorderBuffer<InFlight::Tag*>(
        InFlight::reorderCapacity, maxSequenceNumber,
        [](const InFlight::Tag* tag) -> std::int32_t { return tag->number; });
}

}  // namespace

InFlight::InFlight()
    : mirrors_{makeMirror(), makeMirror(), makeMirror()},
      queue_(maxDue + static_cast<std::size_t>(reorderCapacity)) {}

void InFlight::depart(std::size_t input, Tag& tag, const Moment& moment) {
    waitForRoom();
    Mirror& mirror = mirrors_[input];
    mirror.Push(&tag);
    Tag* due = nullptr;
    while (mirror.Pop(due)) {
        due->due = true;
        append(moment);
    }
}

void InFlight::append(const Moment& moment) {
    const std::lock_guard lock(mutex_);
    queue_.at((front_ + count_) % queue_.size()) = moment;
    ++count_;
}

void InFlight::comeBack(const Tag& tag) {
    if (!tag.due) return;
    bool wake = false;
    {
        const std::lock_guard lock(mutex_);
        front_ = (front_ + 1) % queue_.size();
        --count_;
        wake = awaited_ && count_ <= *awaited_;
    }
    if (wake) drained_.notify_one();
}

void InFlight::readMoment(Moment& moment) const {
    const std::lock_guard lock(mutex_);
    if (count_ > 0) moment = queue_[front_];
}

void InFlight::waitForRoom() {
    std::unique_lock lock(mutex_);
    if (count_ >= maxDue) waitUntilAtMost(maxDue / 2, lock);
}

void InFlight::waitUntilIdle() {
    std::unique_lock lock(mutex_);
    waitUntilAtMost(0, lock);
}

void InFlight::waitUntilAtMost(std::size_t count, std::unique_lock<std::mutex>& lock) {
    awaited_ = count;
    drained_.wait(lock, [&] { return count_ <= count; });
    awaited_.reset();
}

}  // namespace mvrtpfec
