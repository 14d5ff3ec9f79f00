#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "platform/files/files.h"

namespace platform {

namespace fs = std::filesystem;

std::FILE* openForReading(const fs::path& path) noexcept {
    return std::fopen(path.c_str(), "rbe");  // NOLINT(cppcoreguidelines-owning-memory)
}

std::int64_t positionOf(std::FILE* stream) noexcept {
    return ftello(stream);
}

std::FILE* standardInput() noexcept {
    return fdopen(duplicateDescriptor(STDIN_FILENO), "rb");
}

int openForWriting(const fs::path& path) noexcept {
    return open(path.c_str(), O_WRONLY | O_CLOEXEC);
}

int createForWriting(const fs::path& path) noexcept {
    return open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
}

int openForAppending(const fs::path& path, bool emptied) noexcept {
    return open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | (emptied ? O_TRUNC : 0), 0666);
}

int duplicateDescriptor(int descriptor) noexcept {
    return fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
}

std::ptrdiff_t writeSome(int descriptor, std::span<const std::uint8_t> bytes) noexcept {
    return write(descriptor, bytes.data(), bytes.size());
}

bool waitUntilWritable(int descriptor, std::chrono::milliseconds most) noexcept {
    pollfd wanted{descriptor, POLLOUT, 0};
    return poll(&wanted, 1, static_cast<int>(most.count())) > 0;
}

bool closeDescriptor(int descriptor) noexcept {
    return close(descriptor) == 0;
}

bool meansClosedPipe(int error) noexcept {
    return error == EPIPE;
}

bool namesDevice(const fs::path& /*path*/) {
    return false;
}

bool nameOneFile(const fs::path& one, const fs::path& other) {
    std::error_code error;
    const fs::file_status found = fs::status(one, error);
    if (fs::exists(found)) return fs::is_regular_file(found) && fs::equivalent(one, other, error);
    // Where nothing of a relative name is there it stays relative.
    return fs::weakly_canonical(fs::absolute(one, error), error) ==
           fs::weakly_canonical(fs::absolute(other, error), error);
}

bool mayWrite(const fs::path& path) noexcept {
    return access(path.c_str(), W_OK) == 0;
}

std::optional<fs::path> linkTarget(const fs::path& path) {
    std::error_code error;
    fs::path link = fs::read_symlink(path, error);
    if (error) return std::nullopt;
    return path.parent_path() / link;
}

}  // namespace platform
