#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "core/fec_composer.h"
#include "framework/base/critical_section.h"
#include "platform/threads/light_mutex.h"

namespace mvrtpfec {

/// The composers in use, each of which may be missing, and the one thread that may use them at a time.
///
/// State changes leave new composers at the door, and the next packet finds them there. So a thread that
/// changes the state never waits for a packet under way, and that packet's composers live on until it is
/// done. The work's lock is held while FEC packets are delivered; nobody waits for it but other streaming
/// threads. What a graph that goes round feeds back in meanwhile is passed over.
class Protection {
public:
    using Composer = std::unique_ptr<CFecComposer>;

    /// Any thread. Composer B stays what it is. The old ones are destroyed when the next packet comes.
    void replaceA(Composer a) noexcept { leaveAtDoor(std::move(a), std::nullopt); }
    void replaceBoth(Composer a, Composer b) noexcept { leaveAtDoor(std::move(a), std::move(b)); }

    /// One media packet, for composer A and, if it is wanted, composer B. Throws what the composers' sinks
    /// throw: what A can't send, B doesn't see.
    void protect(ConstRtpPacketView media, bool withB) {
        const CAutoLock work(&work_);
        if (busy_) return;
        if (changed_) takeFromDoor();
        const Busy busy(busy_);
        if (a_) a_->protect(media);
        if (withB && b_) b_->protect(media);
    }

private:
    using Replacement = std::optional<Composer>;

    struct Busy {
        explicit Busy(bool& busy) noexcept : flag(busy) { flag = true; }
        ~Busy() { flag = false; }
        bool& flag;
    };

    void leaveAtDoor(Replacement a, Replacement b) noexcept {
        const std::lock_guard lock(door_);
        std::swap(nextA_, a);
        if (b) std::swap(nextB_, b);
        changed_ = true;
    }

    void takeFromDoor() noexcept {
        Replacement a;
        Replacement b;
        {
            const std::lock_guard lock(door_);
            a.swap(nextA_);
            b.swap(nextB_);
            changed_ = false;
        }
        if (a) a_ = std::move(*a);
        if (b) b_ = std::move(*b);
    }

    platform::LightMutex door_;  ///< a leaf
    Replacement nextA_;
    Replacement nextB_;
    std::atomic<bool> changed_{false};

    CCritSec work_;
    Composer a_;
    Composer b_;
    bool busy_ = false;
};

}  // namespace mvrtpfec
