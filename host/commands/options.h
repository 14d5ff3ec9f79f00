#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "host/graph/matrix_config.h"
#include "host/interop/fec_format.h"
#include "host/io/file_format.h"
#include "host/io/packet_source.h"
#include "mvrtpfec/log_perf.h"
#include "mvrtpfec/receiver_guard.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

// Options that several commands share, each with its text in one place.

namespace mvrtpfec {

inline constexpr std::uint16_t defaultMediaPort = 5004;

struct GuardOptions {
    bool isOn = true;
    GuardSettings settings;

    /// None for no guard.
    std::optional<GuardSettings> chosen() const { return isOn ? std::optional(settings) : std::nullopt; }
};

/// A file's name, given by option or, without dashes, by place.
CLI::Option* addPath(CLI::App& command, const std::string& name, std::filesystem::path& path,
                     const std::string& help);
/// --mode, --columns and --rows, or --preset for all of them; requireMatrix() when they have been parsed.
void addMatrixOptions(CLI::App& command, MatrixConfig& matrix);
void addPortOption(CLI::App& command, std::uint16_t& port);
/// --guard and --guard-window.
void addGuardOptions(CLI::App& command, GuardOptions& guard);
/// --fec-format native or standard.
void addFecFormatOption(CLI::App& command, FecFormat& format);
/// The same for what comes in, and auto, for nothing.
void addFecIntakeOption(CLI::App& command, std::optional<FecFormat>& format);
void addJsonOption(CLI::App& command, std::filesystem::path& path);
void addModuleOption(CLI::App& command, std::filesystem::path& path);

/// Throws UsageError when the options don't make a whole matrix, or not one that the composer takes.
void requireMatrix(const CLI::App& command, MatrixConfig& matrix);
/// Throws FileError when a source has had no usable media.
void requireMedia(std::uint64_t packets, const PacketSource& source, const std::filesystem::path& path,
                  std::uint16_t port);
/// Tells where a source broke off, if it did, and `log` too where there is one.
void tellBreak(const PacketSource& source, const std::filesystem::path& path,
               mvn::log::ILogger* log = nullptr);

}  // namespace mvrtpfec
