#pragma once

#include <cstdint>
#include <filesystem>

namespace mvrtpfec {

/// Bits per second of a transport stream file by its clock references: the average of its first 200 MB.
/// Throws FileError, also for a stream without a clock.
std::uint64_t readTsBitRate(const std::filesystem::path& path);

}  // namespace mvrtpfec
