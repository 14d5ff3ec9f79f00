#pragma once

#include <filesystem>

namespace mvrtpfec {

enum class FileFormat { transportStream, pcap, pcapng };

/// Told by the extension alone, in upper or lower case: .ts, .pcap, .pcapng.
/// Throws UsageError for any other.
FileFormat formatOf(const std::filesystem::path& path);

}  // namespace mvrtpfec
