#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace mvrtpfec {

struct LogOptions {
    std::string log;  ///< a file's name, "-" or "syslog:ADDR:PORT", empty for none
    std::int32_t level = 2;
    std::filesystem::path statistics;  ///< empty for none
    std::vector<const char*> buffers;  ///< that the run's filters are going to register
};

/// --log, --log-level and --stats-csv.
void addLogOptions(CLI::App& command, LogOptions& options, std::vector<const char*> buffers = {});

}  // namespace mvrtpfec
