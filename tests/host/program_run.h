#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "platform/process/process.h"
#include "tests/host/child_process.h"
#include "tests/host/io_test_files.h"

namespace mvrtpfec {

/// Runs the program as a user does, in the test's own folder.
class ProgramTest : public FileTest {
protected:
    Outcome run(const std::string& arguments) const { return runProcess(program(), arguments, pathOf("")); }

    /// It stands beside the test.
    static std::filesystem::path program() {
        return platform::programPath().replace_filename(MVRTPFEC_PROGRAM);
    }

    /// The figures of a run, which succeeds unless packets are lost for good.
    nlohmann::json figures(const std::string& arguments, int status = 0) const {
        const Outcome result = run(arguments + " --json figures.json");
        EXPECT_EQ(result.status, status) << result.text;
        const Bytes text = load("figures.json");
        return nlohmann::json::parse(text.begin(), text.end());
    }

    static Bytes sample() {
        const auto prefix = program().parent_path().parent_path();
        std::ifstream file(prefix / "share" / "mvrtpfec" / "sample.ts", std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(file), {});
    }
};

}  // namespace mvrtpfec
