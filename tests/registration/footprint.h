#pragma once

#include <cstddef>

/// What this process takes of the system.
struct Footprint {
    std::size_t memory;   ///< bytes allocated, on Windows in whole pages
    std::size_t handles;  ///< open files, events and the like
    std::size_t modules;  ///< the program and the libraries loaded
    std::size_t threads;
};

Footprint footprint();
