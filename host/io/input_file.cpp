#include "host/io/input_file.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "host/io/file_error.h"
#include "platform/files/files.h"

namespace mvrtpfec {

namespace {

void refuseEmpty(std::FILE* stream, const std::filesystem::path& path) {
    errno = 0;
    const int first = std::fgetc(stream);
    if (first != EOF) {
        std::ungetc(first, stream);
        return;
    }
    if (std::ferror(stream) != 0) throw FileError(path, "cannot read", errno);
    throw FileError(path, "the file is empty");
}

}  // namespace

InputFile::InputFile(std::filesystem::path path)
    : path_(std::move(path)), stream_(platform::openForReading(path_)) {
    if (!stream_) throw FileError(path_, "cannot open", errno);
    std::error_code error;
    if (std::filesystem::is_regular_file(path_, error))
        size_ = static_cast<double>(std::filesystem::file_size(path_, error));
    refuseEmpty(stream_.get(), path_);
}

InputFile::InputFile(std::FILE* stream, std::filesystem::path path)
    : path_(std::move(path)), stream_(stream) {}

double InputFile::progress(std::FILE* stream) const {
    if (size_ <= 0) return 0;
    const double read = static_cast<double>(platform::positionOf(stream)) / size_;
    return read < 1 ? read : 1;
}

}  // namespace mvrtpfec
