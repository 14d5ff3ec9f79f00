#include "host/io/standard_error.h"

#include <cstdio>
#include <string>
#include <utility>

#include "platform/files/files.h"

namespace mvrtpfec {

namespace {

using namespace std::chrono_literals;

std::timed_mutex mutex;
bool statusStands = false;

/// With the mutex held. A stream that has failed once isn't tried again.
bool write(std::string_view text, std::chrono::milliseconds patience) noexcept {
    constexpr int descriptor = 2;
    return std::ferror(stderr) == 0 && platform::waitUntilWritable(descriptor, patience) &&
           std::fwrite(text.data(), 1, text.size(), stderr) == text.size();
}

void finishStatus(std::string_view how, std::chrono::milliseconds patience) noexcept {
    if (std::exchange(statusStands, false)) write(how, patience);
}

}  // namespace

void tellPerson(std::string_view text, std::chrono::milliseconds patience) noexcept {
    const std::unique_lock lock(mutex, patience);
    if (!lock) return;
    finishStatus("\n", patience);
    write(text, patience);
}

void showStatus(std::string_view text, std::chrono::milliseconds patience) noexcept {
    const std::unique_lock lock(mutex, patience);
    if (!lock) return;
    const std::string line = "\r\033[K\033[?7l" + std::string(text) + "\033[?7h";
    statusStands = write(line, patience) || statusStands;
}

void clearStatus() noexcept {
    const std::unique_lock lock(mutex, 0ms);
    if (lock) finishStatus("\r\033[K", 0ms);
}

void endStatus() noexcept {
    tellPerson("", 0ms);
}

std::unique_lock<std::timed_mutex> claimStandardError() {
    std::unique_lock lock(mutex);
    finishStatus("\n", 0ms);
    return lock;
}

}  // namespace mvrtpfec
