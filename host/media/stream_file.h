#pragma once

#include <cstdint>
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

    double progress() const { return file_.progress(file_.stream()); }
    const std::filesystem::path& path() const { return file_.path(); }

private:
    InputFile file_;
};

}  // namespace mvrtpfec
