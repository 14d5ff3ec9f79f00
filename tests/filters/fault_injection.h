#pragma once

#include <cstddef>

#include "platform/threads/sync.h"

namespace mvrtpfec {

/// What the operating system can refuse.
enum class Resource { memory, event, semaphore, thread, criticalSection };

/// While it lives, the calling thread's n-th request (from 0) for the resource fails, and every later one.
class FaultInjection {
public:
    FaultInjection(Resource resource, std::size_t n);
    ~FaultInjection();

    FaultInjection(const FaultInjection&) = delete;
    FaultInjection& operator=(const FaultInjection&) = delete;

    /// Whether a request was refused.
    bool fired() const;

    /// The last error that a refused request leaves.
    static constexpr DWORD error = 1450;
};

/// Memory blocks taken and not given back, by any thread.
std::ptrdiff_t blocksInUse();

}  // namespace mvrtpfec
