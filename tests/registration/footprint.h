#pragma once

#include <cstddef>

/// What this process takes of the system.
struct Footprint {
    std::size_t memory;   ///< bytes of its own in memory or swapped out
    std::size_t handles;  ///< open files, events and the like
    std::size_t modules;  ///< loaded libraries; natively everything that is mapped
    std::size_t threads;
};

Footprint footprint();
