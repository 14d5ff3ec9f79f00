#include <system_error>

#include <unistd.h>

#include "platform/process/process.h"

namespace platform {

std::filesystem::path programPath() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error);
}

int processId() noexcept {
    return getpid();
}

std::vector<std::string> programArguments(int argc, char** argv) {
    return {argv, argv + argc};
}

}  // namespace platform
