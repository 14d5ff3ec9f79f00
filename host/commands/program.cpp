#include "host/commands/program.h"

#include <exception>
#include <sstream>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "host/commands/commands.h"
#include "host/io/standard_error.h"
#include "host/io/standard_output.h"
#include "host/usage_error.h"
#include "platform/process/signals.h"
#include "platform/process/terminal.h"

namespace mvrtpfec {

namespace {

enum ExitStatus : int { done = 0, failed = 1, wrongUsage = 2, lostPackets = 3 };

int complain(const char* what, ExitStatus status) {
    tellPerson("mvrtpfec: " + std::string(what) + "\n");
    return status;
}

/// Help and version asked for end well; every other parse error is wrong usage.
int answer(const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
        std::ostringstream text;
        app.exit(error, text, text);
        print(text.str());
        flushPrinted();
        return done;
    }
    return complain(fmt::format("{} (--help tells more)", error.what()).c_str(), wrongUsage);
}

void requireKnownCommand(const CLI::App& app, const std::vector<std::string>& arguments) {
    if (arguments.size() < 2) throw UsageError("a command is required (--help tells more)");
    const std::string& word = arguments[1];
    const auto bearsIt = [&](const CLI::App* command) { return command->get_name() == word; };
    const bool isOption = word.starts_with("-");
    if (isOption ? app.get_option_no_throw(word) != nullptr : !app.get_subcommands(bearsIt).empty()) return;
    throw UsageError(
        fmt::format("there is no {} '{}' (--help tells more)", isOption ? "option" : "command", word));
}

/// As CLI11 takes them: from the back.
std::vector<std::string> withoutName(const std::vector<std::string>& arguments) {
    if (arguments.empty()) return {};
    return {arguments.rbegin(), arguments.rend() - 1};
}

int parse(CLI::App& app, const std::vector<std::string>& arguments) {
    try {
        app.parse(withoutName(arguments));
        flushPrinted();
        return done;
    } catch (const CLI::ParseError& error) {
        return answer(app, error);
    }
}

}  // namespace

int runProgram(const std::vector<std::string>& arguments) {
    platform::useBinaryStandardStreams();
    platform::ignoreWriteSignals();
    platform::watchForInterruption();

    CLI::App app(
        "Packet-level FEC for MPEG-2 transport streams over RTP, and elementary streams as RTP packets.",
        "mvrtpfec");
    app.set_version_flag("--version", "mvrtpfec " MVRTPFEC_VERSION);
    app.require_subcommand(1);
    app.footer("Each command has its own help: mvrtpfec protect --help");
    addProtectCommand(app);
    addRepairCommand(app);
    addSimulateCommand(app);
    addPacketizeCommand(app);
    addUnitsCommand(app);
    addStreamCommand(app);
    addSendCommand(app);
    addReceiveCommand(app);
    addRelayCommand(app);
    addPlanCommand(app);
    addSelftestCommand(app);

    try {
        requireKnownCommand(app, arguments);
        return parse(app, arguments);
    } catch (const UsageError& error) {
        return complain(error.what(), wrongUsage);
    } catch (const LossError& error) {
        return complain(error.what(), lostPackets);
    } catch (const std::exception& error) {
        return complain(error.what(), failed);
    }
}

}  // namespace mvrtpfec
