#pragma once

#include <filesystem>
#include <string>
#include <vector>

// This process, as the system knows it.

namespace platform {

/// The file that this program was started from, links followed; empty when the system doesn't tell.
std::filesystem::path programPath();

int processId() noexcept;

/// The command line's words, the program's name first, in UTF-8: on Windows they are asked of the system,
/// since what main() is given there is in the system's code page.
std::vector<std::string> programArguments(int argc, char** argv);

}  // namespace platform
