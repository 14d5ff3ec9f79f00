#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

#include "tests/registration/footprint.h"

namespace {

std::size_t entriesOf(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::size_t linesOf(const char* file) {
    std::ifstream stream(file);
    return static_cast<std::size_t>(
        std::count(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>(), '\n'));
}

std::size_t memory() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::size_t shared = 0;
    std::ifstream("/proc/self/statm") >> total >> resident >> shared;
    return (resident - shared) * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace

Footprint footprint() {
    return {memory(), entriesOf("/proc/self/fd"), linesOf("/proc/self/maps"), entriesOf("/proc/self/task")};
}
