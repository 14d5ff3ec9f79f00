#pragma once

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>
#include <sys/wait.h>

#include "tests/host/io_test_files.h"

namespace mvrtpfec {

struct Outcome {
    int status = -1;
    std::string text;  ///< what it printed, errors included
};

/// Runs the program as a user does, in the test's own folder.
class ProgramTest : public FileTest {
protected:
    Outcome run(const std::string& arguments) const {
        const std::string line =
            "cd " + pathOf("").string() + " && " MVRTPFEC_PROGRAM " " + arguments + " 2>&1";
        std::FILE* pipe = popen(line.c_str(), "r");
        Outcome result;
        std::array<char, 4096> buffer{};
        while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe))
            result.text.append(buffer.data(), count);
        result.status = WEXITSTATUS(pclose(pipe));
        return result;
    }

    /// The figures of a run that must succeed.
    nlohmann::json figures(const std::string& arguments) const {
        const Outcome result = run(arguments + " --json figures.json");
        EXPECT_EQ(result.status, 0) << result.text;
        const Bytes text = load("figures.json");
        return nlohmann::json::parse(text.begin(), text.end());
    }

    static Bytes sample() {
        std::ifstream file(MVRTPFEC_SAMPLE, std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(file), {});
    }
};

}  // namespace mvrtpfec
