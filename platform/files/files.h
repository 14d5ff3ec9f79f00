#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <span>

// Files as the C runtime has them, which std::filesystem doesn't open: in binary mode, named by paths in any
// script, not inherited by child processes. Failures are told as the runtime does: null, -1 or false, with
// the reason in errno.

namespace platform {

std::FILE* openForReading(const std::filesystem::path& path) noexcept;
/// Another stream on standard input, to be closed like any.
std::FILE* standardInput() noexcept;
/// Where the next read begins, in bytes from the start.
std::int64_t positionOf(std::FILE* stream) noexcept;

/// A descriptor for what is there already, whose content stays: a device, a pipe.
int openForWriting(const std::filesystem::path& path) noexcept;
/// A descriptor for a new file; EEXIST when there is one.
int createForWriting(const std::filesystem::path& path) noexcept;
/// A descriptor that writes at the end of a file, which is created where there is none or, when `emptied`,
/// loses what it had.
int openForAppending(const std::filesystem::path& path, bool emptied) noexcept;
/// Another descriptor for what an open one stands for, position included.
int duplicateDescriptor(int descriptor) noexcept;
/// How many of the bytes were taken.
std::ptrdiff_t writeSome(int descriptor, std::span<const std::uint8_t> bytes) noexcept;
bool closeDescriptor(int descriptor) noexcept;
/// Whether a write failed with this reason because the pipe's reader has gone.
bool meansClosedPipe(int error) noexcept;
/// Waits until a pipe has room for 4096 bytes, as other files always have. False when it hasn't in that time,
/// or when a signal came.
bool waitUntilWritable(int descriptor, std::chrono::milliseconds most) noexcept;

/// Whether a name stands for a device by itself, which std::filesystem doesn't tell: NUL, CON or a pipe on
/// Windows.
bool namesDevice(const std::filesystem::path& path);

/// Whether two names, links followed, stand for one regular file, by the number that its volume knows it by;
/// or for one that isn't there yet, by its full name.
bool nameOneFile(const std::filesystem::path& one, const std::filesystem::path& other);

/// Whether this user may write to an existing file.
bool mayWrite(const std::filesystem::path& path) noexcept;

/// Where a link leads, one step or all the way; nothing for a path that is no link.
std::optional<std::filesystem::path> linkTarget(const std::filesystem::path& path);

}  // namespace platform
