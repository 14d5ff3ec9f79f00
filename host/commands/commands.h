#pragma once

#include <stdexcept>

namespace CLI {
class App;
}

namespace mvrtpfec {

/// The work is done, but packets were lost for good; the program ends with status 3.
class LossError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Each adds one command with its options and help; it runs when the command line has been parsed.
void addProtectCommand(CLI::App& app);
void addRepairCommand(CLI::App& app);
void addSimulateCommand(CLI::App& app);
void addPacketizeCommand(CLI::App& app);
void addUnitsCommand(CLI::App& app);
void addSelftestCommand(CLI::App& app);
void addStreamCommand(CLI::App& app);
void addSendCommand(CLI::App& app);
void addReceiveCommand(CLI::App& app);
void addRelayCommand(CLI::App& app);
void addPlanCommand(CLI::App& app);

}  // namespace mvrtpfec
