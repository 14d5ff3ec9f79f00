#pragma once

#include <chrono>
#include <filesystem>
#include <string_view>

namespace mvrtpfec {

/// Lines of JSON for a file, or for a program that reads them as they come.
class JsonLines {
public:
    /// "" for none, "-" for standard output. Throws FileError.
    explicit JsonLines(const std::filesystem::path& path);
    ~JsonLines();

    JsonLines(const JsonLines&) = delete;
    JsonLines& operator=(const JsonLines&) = delete;

    bool isOpen() const noexcept { return descriptor_ >= 0; }
    /// Waits so long for a reader that has stopped reading; false when the line was left out for it. One
    /// that can't be written is told, and is the last. A line has at most 4096 bytes.
    bool write(std::string_view line, std::chrono::milliseconds patience);
    /// Whether that has happened, and not because a reader has gone.
    bool hasFailed() const noexcept { return failed_; }

private:
    void close() noexcept;

    int descriptor_ = -1;
    bool failed_ = false;
};

}  // namespace mvrtpfec
