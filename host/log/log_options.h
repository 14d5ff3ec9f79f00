#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace CLI {
class App;
}

namespace mvrtpfec {

struct LogOptions {
    std::string log;  ///< a file's name, "-" or "syslog:ADDR:PORT", empty for none
    std::int32_t level = 2;
    std::filesystem::path statistics;  ///< empty for none
};

/// --log, --log-level and --stats-csv.
void addLogOptions(CLI::App& command, LogOptions& options);

}  // namespace mvrtpfec
