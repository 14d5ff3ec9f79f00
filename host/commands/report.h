#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/interop/fec_watch.h"
#include "host/io/packet_source.h"
#include "host/stages/repair_chain.h"
#include "mvrtpfec/log_perf.h"

namespace mvrtpfec {

/// Lines of a short table, each a name and what was counted.
using Table = std::vector<std::pair<std::string, std::string>>;

nlohmann::ordered_json toJson(const RepairFigures& figures);
void addRows(Table& table, const RepairFigures& figures);
/// What the FEC packets that came tell of their sender.
nlohmann::ordered_json toJson(const FecFigures& fec);
void addRows(Table& table, const FecFigures& fec);
/// What the source had to leave out, if anything.
void addSourceRows(Table& table, PacketSource& source);

// Of what may be null: bytes of a transport stream that belong to no packet.
std::uint64_t totalOf(const SkippedBytes* skipped);
void addSkippedRow(Table& table, const SkippedBytes* skipped);
/// Tells a person, and the log where there is one, where they stand.
void tellSkipped(SkippedBytes* skipped, mvn::log::ILogger* log);

/// The same in one line, a warning when packets are lost for good.
void logFigures(mvn::log::ILogger& log, const RepairFigures& figures);

/// Throws LossError when packets are missing in what was delivered.
void requireWhole(const RepairFigures& figures);

/// Prints the table, on standard error where the JSON has standard output for itself, and writes the
/// JSON object where `path` says ("" nowhere, "-" standard output). Throws FileError.
void publish(const std::string& title, const Table& table, const std::string& verdict,
             const nlohmann::ordered_json& json, const std::filesystem::path& path);

}  // namespace mvrtpfec
