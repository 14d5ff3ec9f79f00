#include "host/log/log_options.h"

#include <utility>

#include <CLI/CLI.hpp>

#include "host/commands/choice_option.h"
#include "host/commands/options.h"

namespace mvrtpfec {

void addLogOptions(CLI::App& command, LogOptions& options, std::vector<const char*> buffers) {
    options.buffers = std::move(buffers);
    command
        .add_option("--log", options.log,
                    "Append messages to FILE, show them on standard error or send them to a syslog server")
        ->type_name("FILE|-|syslog:ADDR:PORT");
    addChoice(command, "--log-level", options.level,
              {{"error", 0}, {"warning", 1}, {"info", 2}, {"debug", 3}},
              "Least severe messages for --log: error, warning, info or debug [info]")
        ->type_name("LEVEL");
    addPath(command, "--stats-csv", options.statistics,
            "Write a line of figures to FILE each second: load, memory, buffers found full")
        ->type_name("FILE");
}

}  // namespace mvrtpfec
