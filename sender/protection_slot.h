#pragma once

#include <memory>
#include <mutex>
#include <utility>

#include "sender/protection.h"

namespace mvrtpfec {

/// The protection of one output, or none. State changes replace it while a streaming thread may be working
/// with it; the thread keeps the one it has got alive. A leaf lock, held for the copy or the exchange alone.
class ProtectionSlot {
public:
    std::shared_ptr<Protection> get() const {
        const std::lock_guard lock(mutex_);
        return protection_;
    }

    /// The previous one is destroyed, here or by the thread that still uses it.
    void set(std::shared_ptr<Protection> protection) {
        const std::lock_guard lock(mutex_);
        protection_.swap(protection);
        // The parameter, which now holds the previous one, outlives the lock.
    }

private:
    mutable std::mutex mutex_;
    std::shared_ptr<Protection> protection_;
};

}  // namespace mvrtpfec
