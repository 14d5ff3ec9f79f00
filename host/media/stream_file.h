#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/io/input_file.h"

namespace mvrtpfec {

/// Bytes of a file in the order they stand in.
class StreamFile {
public:
    explicit StreamFile(InputFile file) : file_(std::move(file)) {}

    /// Adds up to `count` bytes to `bytes`, fewer only at the end; false when there were none. Throws
    /// FileError.
    bool read(std::size_t count, std::vector<std::uint8_t>& bytes);

    /// The first bytes of the file, fewer than `count` only where it has no more; to be asked for before the
    /// first read(). Throws FileError.
    std::span<const std::uint8_t> peek(std::size_t count);

    double progress() const { return file_.progress(file_.stream()); }
    const std::filesystem::path& path() const { return file_.path(); }

private:
    bool readFile(std::size_t count, std::vector<std::uint8_t>& bytes);

    InputFile file_;
    std::vector<std::uint8_t> peeked_;
};

}  // namespace mvrtpfec
