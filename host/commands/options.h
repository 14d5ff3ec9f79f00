#pragma once

#include <cstdint>
#include <string>

#include <CLI/CLI.hpp>

#include "host/graph/matrix_config.h"
#include "host/io/file_format.h"
#include "host/io/packet_source.h"

// Options that several commands share, each with its text in one place.

namespace mvrtpfec {

inline constexpr std::uint16_t defaultMediaPort = 5004;

void addMatrixOptions(CLI::App& command, MatrixConfig& matrix);
void addPortOption(CLI::App& command, std::uint16_t& port);
void addGuardOption(CLI::App& command, bool& guard);
void addJsonOption(CLI::App& command, std::string& path);

/// Throws UsageError with the composer's own message.
void checkMatrix(const MatrixConfig& matrix);
/// Throws FileError when a source has had no usable media.
void requireMedia(std::uint64_t packets, const PacketSource& source, const std::string& path,
                  std::uint16_t port);
/// Throws UsageError when two files to be written are one.
void requireDistinct(const std::string& one, const std::string& other);
/// Throws UsageError for a name whose extension tells no format.
FileFormat requireFormat(const std::string& path);

}  // namespace mvrtpfec
