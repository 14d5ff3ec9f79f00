#pragma once

#include <filesystem>
#include <vector>

namespace mvrtpfec {

/// What a run's command line names to be read and to be written. Empty names stand for none; "-" is standard
/// input or output.
struct RunFiles {
    std::vector<std::filesystem::path> read;
    std::vector<std::filesystem::path> written;
};

/// Throws UsageError when a file to be written is one that is read or is named twice, in whatever way: to be
/// asked before anything is opened for writing.
void requireDistinct(const RunFiles& files);

}  // namespace mvrtpfec
