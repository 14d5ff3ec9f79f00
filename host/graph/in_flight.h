#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "core/reorder_buffer.h"
#include "host/graph/moment.h"

namespace mvrtpfec {

/// Knows which of the packets given to a receiver it has still to work off, and since when.
///
/// A receiver filter takes packets in on the host's thread, puts each input's in order and works off, on a
/// thread of its own, what has come due. This class runs the same reorder buffers on the same packets. So it
/// knows before a packet is given to the receiver which ones that makes due, in the order in which they
/// will be worked off, and queues the moment of the push for each. A due packet that has come back has been
/// worked off and takes the front of the queue with it; while the receiver delivers, the front is the moment
/// that set free what it delivers. Packets given up by a reorder buffer come back without having been due.
///
/// That makes the output's times, the end of a stream and the bound on packets under way independent of how
/// the two threads happen to run. The host must let go of a packet before it gives the receiver the next.
class InFlight {
public:
    static constexpr std::size_t inputCount = 3;
    /// Packets of an input that wait for a missing one at most, as in the receiver.
    static constexpr std::int32_t reorderCapacity = 20;
    /// So many due packets are too much.
    static constexpr std::size_t maxDue = 256;
    /// Packets that a receiver has at once, at most.
    static constexpr std::size_t maxOut = 512;

    /// Rides on a packet while the receiver has it.
    struct Tag {
        std::uint16_t number = 0;  ///< its sequence number
        bool due = false;
    };

    InFlight();

    /// Host's thread, before the packet that bears `tag` is given to an input. Waits while too much is under
    /// way, and then until half of it has been worked off, so that the threads change places seldom.
    void depart(std::size_t input, Tag& tag, const Moment& moment);
    /// Any thread: the packet has come back.
    void comeBack(const Tag& tag);

    /// Receiver's thread, while it delivers: copies the moment of what is being worked off. It stays as it is
    /// when nothing is.
    void readMoment(Moment& moment) const;

    /// Host's thread: waits until everything due has been worked off; all that its packets caused on the
    /// receiver's thread has happened then.
    void waitUntilIdle();

private:
    using Mirror = CRtpPacketReorderBuffer<Tag*>;

    static_assert(maxDue + (inputCount + 1) * reorderCapacity <= maxOut);

    void waitForRoom();
    void append(const Moment& moment);
    void waitUntilAtMost(std::size_t count, std::unique_lock<std::mutex>& lock);

    std::array<Mirror, inputCount> mirrors_;

    mutable std::mutex mutex_;
    std::condition_variable drained_;
    std::vector<Moment> queue_;  ///< a ring, so that its moments keep their memory
    std::size_t front_ = 0;
    std::size_t count_ = 0;
    std::optional<std::size_t> awaited_;  ///< the count that the host's thread waits for
};

}  // namespace mvrtpfec
