#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace mvrtpfec {

/// A file being written. A regular file comes to life beside its place, "feed.ts" as "feed.ts.part", and
/// takes its own name in finish(); until then a file that was there before stays as it was. Devices, FIFOs
/// and paths such as /dev/stdout are written directly.
///
/// Writes are gathered in a buffer. Every failure is a FileError that names the file asked for and the
/// system's reason; for a closed pipe or a file size limit too where the process ignores their signals
/// (platform/process/signals.h). A killed process leaves its ".part", which nobody replaces: where there is
/// one already the next is "feed.ts.part2", and so on. One thread.
class OutputFile {
public:
    explicit OutputFile(std::filesystem::path path);

    /// Without finish() before: removes the temporary file, drops what is buffered.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(std::span<const std::uint8_t> bytes);

    /// Writes out what is buffered.
    void flush();

    /// Whether a pipe has room for what a packet needs, at the latest then; see platform::waitUntilWritable.
    bool isWritableWithin(std::chrono::milliseconds time) const noexcept;

    /// In place of finish() after a failure: what could be written takes its place.
    void keep() noexcept;

    /// Writes out what is buffered and puts the file in its place. Once, as the last call.
    void finish();

private:
    void openBeside(const std::filesystem::file_status& old);
    [[noreturn]] void fail(const char* action) const;

    std::filesystem::path path_;       ///< as asked for
    std::filesystem::path target_;     ///< with links followed
    std::filesystem::path temporary_;  ///< empty when written directly, and after finish()
    int descriptor_ = -1;
    std::vector<std::uint8_t> buffer_;
};

/// What stands beside a file's place from writers that didn't finish, or haven't yet.
std::vector<std::filesystem::path> unfinishedOf(const std::filesystem::path& path);

}  // namespace mvrtpfec
