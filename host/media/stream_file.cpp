#include "host/media/stream_file.h"

#include <algorithm>
#include <cerrno>

#include "host/io/file_error.h"

namespace mvrtpfec {

std::span<const std::uint8_t> StreamFile::peek(std::size_t count) {
    readFile(count, peeked_);
    return peeked_;
}

bool StreamFile::read(std::size_t count, std::vector<std::uint8_t>& bytes) {
    const std::size_t again = std::min(count, peeked_.size());
    const auto end = peeked_.begin() + static_cast<std::ptrdiff_t>(again);
    bytes.insert(bytes.end(), peeked_.begin(), end);
    peeked_.erase(peeked_.begin(), end);
    return (again < count && readFile(count - again, bytes)) || again > 0;
}

bool StreamFile::readFile(std::size_t count, std::vector<std::uint8_t>& bytes) {
    const std::size_t before = bytes.size();
    bytes.resize(before + count);
    errno = 0;
    const std::size_t got = std::fread(bytes.data() + before, 1, count, file_.stream());
    if (std::ferror(file_.stream()) != 0) throw FileError(path(), "cannot read", errno);
    bytes.resize(before + got);
    return got > 0;
}

}  // namespace mvrtpfec
