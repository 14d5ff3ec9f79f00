#include <array>
#include <cstdio>

#include <sys/wait.h>

#include "tests/host/child_process.h"

namespace mvrtpfec {

Outcome runProcess(const std::filesystem::path& program, const std::string& arguments,
                   const std::filesystem::path& folder) {
    const std::string line = "cd " + folder.string() + " && " + program.string() + " " + arguments + " 2>&1";
    std::FILE* pipe = popen(line.c_str(), "r");
    Outcome result;
    std::array<char, 4096> buffer{};
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe))
        result.text.append(buffer.data(), count);
    result.status = WEXITSTATUS(pclose(pipe));
    return result;
}

}  // namespace mvrtpfec
