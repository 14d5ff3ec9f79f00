#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>

#include <unistd.h>

#include "platform/process/system_figures.h"

namespace platform {

namespace {

constexpr std::uint64_t unitsPerSecond = 10'000'000;
constexpr std::uint64_t bytesPerKilobyte = 1024;

struct Closes {
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): this is the owner
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Closes>;

std::uint64_t fromTicks(unsigned long long ticks) noexcept {
    const auto perSecond = static_cast<std::uint64_t>(std::max(sysconf(_SC_CLK_TCK), 1L));
    return ticks * (unitsPerSecond / perSecond);
}

void readProcessTimes(SystemFigures& figures) noexcept {
    std::array<char, 1024> line{};
    const File file(std::fopen("/proc/self/stat", "r"));
    if (file == nullptr || std::fgets(line.data(), line.size(), file.get()) == nullptr) return;
    // The program's name, in parentheses, may hold anything.
    const char* behindName = std::strrchr(line.data(), ')');
    unsigned long long user = 0;
    unsigned long long kernel = 0;
    if (behindName == nullptr ||
        std::sscanf(behindName + 1, " %*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %llu %llu", &user,
                    &kernel) != 2)
        return;
    figures.processUserTime = fromTicks(user);
    figures.processKernelTime = fromTicks(kernel);
}

void readSystemTimes(SystemFigures& figures) noexcept {
    unsigned long long user = 0;
    unsigned long long nice = 0;
    unsigned long long system = 0;
    unsigned long long idle = 0;
    unsigned long long waiting = 0;
    unsigned long long interrupts = 0;
    unsigned long long softInterrupts = 0;
    const File file(std::fopen("/proc/stat", "r"));
    if (file == nullptr || std::fscanf(file.get(), "cpu %llu %llu %llu %llu %llu %llu %llu", &user, &nice,
                                       &system, &idle, &waiting, &interrupts, &softInterrupts) != 7)
        return;
    figures.userTime = fromTicks(user + nice);
    figures.idleTime = fromTicks(idle + waiting);
    figures.kernelTime = fromTicks(system + interrupts + softInterrupts) + figures.idleTime;
}

/// Bytes of a line "NAME:   123 kB"; 0 when there is none.
std::uint64_t bytesOf(const char* path, const char* name) noexcept {
    const File file(std::fopen(path, "r"));
    if (file == nullptr) return 0;
    std::array<char, 256> line{};
    const std::size_t length = std::strlen(name);
    while (std::fgets(line.data(), line.size(), file.get()) != nullptr) {
        unsigned long long kilobytes = 0;
        if (std::strncmp(line.data(), name, length) == 0 && line.at(length) == ':' &&
            std::sscanf(line.data() + length + 1, "%llu", &kilobytes) == 1)
            return kilobytes * bytesPerKilobyte;
    }
    return 0;
}

std::uint32_t openDescriptors() noexcept {
    std::error_code error;
    const std::filesystem::directory_iterator descriptors("/proc/self/fd", error);
    if (error) return 0;
    const auto count = std::distance(begin(descriptors), end(descriptors));
    return static_cast<std::uint32_t>(count - 1);  // without the one that lists them
}

}  // namespace

SystemFigures readSystemFigures() noexcept {
    constexpr const char* status = "/proc/self/status";
    SystemFigures figures;
    readProcessTimes(figures);
    readSystemTimes(figures);
    figures.workingSet = bytesOf(status, "VmRSS");
    figures.privateBytes = bytesOf(status, "VmData");
    figures.committedBytes = bytesOf("/proc/meminfo", "Committed_AS");
    figures.handleCount = openDescriptors();
    return figures;
}

}  // namespace platform
