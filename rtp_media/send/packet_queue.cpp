#include "rtp_media/send/packet_queue.h"

#include <algorithm>
#include <utility>

namespace mvrtpfec {

void PacketQueue::append(std::unique_ptr<RTPMediaPacket> packet) {
    auto arrival =
        std::make_unique<Arrival>(Arrival{std::move(packet), newest_.load(std::memory_order_relaxed)});
    while (!newest_.compare_exchange_weak(arrival->before, arrival.get(), std::memory_order_release,
                                          std::memory_order_relaxed)) {
    }
    arrival.release();  // the list's now
}

RTPMediaPacket* PacketQueue::front() {
    if (ordered_.empty()) takeArrivals();
    return ordered_.empty() ? nullptr : ordered_.front().get();
}

void PacketQueue::clear() {
    takeArrivals();
    ordered_.clear();
}

/// The list is newest first.
void PacketQueue::takeArrivals() {
    const auto known = static_cast<std::ptrdiff_t>(ordered_.size());
    std::unique_ptr<Arrival> arrival(newest_.exchange(nullptr, std::memory_order_acquire));
    while (arrival != nullptr) {
        ordered_.push_back(std::move(arrival->packet));
        arrival.reset(arrival->before);
    }
    std::reverse(ordered_.begin() + known, ordered_.end());
}

}  // namespace mvrtpfec
