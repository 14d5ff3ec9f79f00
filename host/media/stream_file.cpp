#include "host/media/stream_file.h"

#include <cerrno>

#include "host/io/file_error.h"

namespace mvrtpfec {

bool StreamFile::read(std::size_t count, std::vector<std::uint8_t>& bytes) {
    const std::size_t before = bytes.size();
    bytes.resize(before + count);
    errno = 0;
    const std::size_t got = std::fread(bytes.data() + before, 1, count, file_.stream());
    if (std::ferror(file_.stream()) != 0) throw FileError(path(), "cannot read", errno);
    bytes.resize(before + got);
    return got > 0;
}

}  // namespace mvrtpfec
