#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>

namespace mvrtpfec {

/// A file, device or FIFO opened for reading through stdio. Owns the stream.
class InputFile {
public:
    /// Throws FileError when it cannot be opened, cannot be read, or is empty.
    explicit InputFile(std::filesystem::path path);

    /// Takes over an open stream; `path` only names it in messages.
    InputFile(std::FILE* stream, std::filesystem::path path);

    std::FILE* stream() const { return stream_.get(); }
    const std::filesystem::path& path() const { return path_; }

    /// Gives the stream away to someone who closes it.
    std::FILE* release() { return stream_.release(); }

    /// Share of a regular file before the place where `stream` stands, 0 to 1; otherwise 0.
    double progress(std::FILE* stream) const;

private:
    struct Closer {
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): this is the owner
        void operator()(std::FILE* stream) const { std::fclose(stream); }
    };

    std::filesystem::path path_;
    std::unique_ptr<std::FILE, Closer> stream_;
    double size_ = 0;
};

}  // namespace mvrtpfec
