#pragma once

#include <string>
#include <vector>

namespace mvrtpfec::bench {

/// Runs a program, its output thrown away, and gives the CPU seconds it spent outside the kernel, so that
/// what it sends or writes isn't held against it. Throws std::runtime_error when it can't be started or
/// fails.
double userSecondsOf(const std::vector<std::string>& command);

}  // namespace mvrtpfec::bench
