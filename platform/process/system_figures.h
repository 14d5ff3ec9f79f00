#pragma once

#include <cstdint>

namespace platform {

/// What the system tells of this process and itself. Times are in 100 ns.
struct SystemFigures {
    std::uint64_t processKernelTime = 0;
    std::uint64_t processUserTime = 0;
    std::uint64_t idleTime = 0;    ///< of all processors
    std::uint64_t kernelTime = 0;  ///< the idle time included
    std::uint64_t userTime = 0;
    std::uint64_t workingSet = 0;      ///< bytes of this process in memory
    std::uint64_t privateBytes = 0;    ///< bytes that the system must keep for this process alone
    std::uint64_t committedBytes = 0;  ///< of the whole system
    std::uint32_t handleCount = 0;     ///< of this process
};

/// Zeros for what can't be read.
///
/// Natively from /proc: the times from /proc/self/stat and the first line of /proc/stat (clock ticks, so in
/// steps of 10 ms; waiting for disks counts as idle, interrupts as kernel), VmRSS and, for the private bytes,
/// VmData of /proc/self/status, Committed_AS of /proc/meminfo, and for the
/// handles the open descriptors.
SystemFigures readSystemFigures() noexcept;

}  // namespace platform
