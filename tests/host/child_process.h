#pragma once

#include <filesystem>
#include <string>

namespace mvrtpfec {

struct Outcome {
    int status = -1;
    std::string text;  ///< what it printed, errors included
};

/// Runs a program in a folder until it ends. The arguments are one line, parted by blanks; "" is an empty
/// one.
Outcome runProcess(const std::filesystem::path& program, const std::string& arguments,
                   const std::filesystem::path& folder);

}  // namespace mvrtpfec
