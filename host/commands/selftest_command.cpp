#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "host/commands/commands.h"
#include "host/commands/options.h"
#include "host/commands/sample_file.h"
#include "host/io/standard_output.h"
#include "host/usage_error.h"
#include "platform/files/utf8_path.h"
#include "selftest/rtp_packet_builder_tester.h"
#include "selftest/suites.h"

namespace mvrtpfec {

namespace {

namespace fs = std::filesystem;

/// As the suites take it, with a separator at its end.
std::string folderText(const fs::path& folder) {
    return platform::utf8From(folder / "");
}

std::string missingFiles(const TestSuite& suite) {
    std::string missing;
    for (const auto& test : suite) {
        const auto* const stream = dynamic_cast<const CRtpPacketBuilderTester*>(test.get());
        if (stream != nullptr && !stream->hasFile()) missing += "\n  " + stream->filePath();
    }
    return missing;
}

void runSuite(const std::string& name, const TestSuite& suite) {
    std::size_t passed = 0;
    for (const auto& test : suite) {
        std::ostringstream outcome;
        passed += runTest(*test, outcome) ? 1U : 0U;
        print(outcome.str());
        flushPrinted();
    }
    print(fmt::format("{}: {} of {} tests passed\n", name, passed, suite.size()));
    flushPrinted();
    if (const std::string missing = missingFiles(suite); !missing.empty())
        throw std::runtime_error("these files are to be supplied:" + missing);
    if (passed < suite.size()) throw std::runtime_error("self tests failed");
}

}  // namespace

void addSelftestCommand(CLI::App& app) {
    const auto data = std::make_shared<fs::path>();
    CLI::App* command = app.add_subcommand("selftest", "Run the packetizers' self tests");
    addPath(*command, "--data", *data, "Folder with the files of the suite LibRtp, to run that one")
        ->type_name("DIR");
    command->footer("Without --data the tests run over the sample streams that come with the program.");
    command->callback([command, data] {
        if (command->count("--data") > 0 && data->empty()) throw UsageError("--data names no folder");
        if (data->empty()) {
            runSuite("Samples", samplesSuite(folderText(findSample().parent_path() / "streams")));
        } else {
            runSuite("LibRtp", libRtpSuite(folderText(*data)));
        }
    });
}

}  // namespace mvrtpfec
