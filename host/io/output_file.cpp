#include "host/io/output_file.h"

#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/io/file_error.h"

namespace mvrtpfec {

namespace {

constexpr std::size_t bufferSize = 64 * 1024;

/// The descriptor that a /dev path stands for. Opening such a path again would start at the beginning
/// of a file that the shell appends to, so these are duplicated instead.
std::optional<int> descriptorNamed(std::string_view path) {
    if (path == "/dev/stdout") return STDOUT_FILENO;
    if (path == "/dev/stderr") return STDERR_FILENO;
    for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/"}) {
        if (!path.starts_with(folder)) continue;
        const std::string_view digits = path.substr(folder.size());
        int descriptor = -1;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), descriptor);
        if (error == std::errc() && end == digits.data() + digits.size()) return descriptor;
    }
    return std::nullopt;
}

/// Follows links up to a path that stands for a descriptor, or to the end, existing or not.
std::filesystem::path followed(std::filesystem::path path) {
    constexpr int maxLinks = 40;
    std::error_code error;
    for (int i = 0; i < maxLinks && !descriptorNamed(path.string()); ++i) {
        const std::filesystem::path link = std::filesystem::read_symlink(path, error);
        if (error) break;
        path = path.parent_path() / link;
    }
    return path;
}

std::string temporaryName() {
    static std::atomic<unsigned> count = 0;
    return ".mvrtpfec-" + std::to_string(getpid()) + "-" + std::to_string(count++) + ".part";
}

}  // namespace

void ignoreWriteSignals() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

OutputFile::OutputFile(std::filesystem::path path) : path_(std::move(path)) {
    buffer_.reserve(bufferSize);
    struct stat old {};
    const bool exists = stat(path_.c_str(), &old) == 0;
    target_ = followed(path_);
    if (const std::optional<int> given = descriptorNamed(target_.string())) {
        descriptor_ = fcntl(*given, F_DUPFD_CLOEXEC, 0);
        if (descriptor_ < 0) fail("cannot open for writing");
    } else if (exists && !S_ISREG(old.st_mode)) {
        openDirectly(path_.c_str());
    } else {
        openBeside(exists ? old.st_mode : 0);
    }
}

void OutputFile::openDirectly(const char* name) {
    descriptor_ = open(name, O_WRONLY | O_CLOEXEC);
    if (descriptor_ < 0) fail("cannot open for writing");
}

/// `modeOfOld` is that of the file to be replaced, 0 when there is none.
void OutputFile::openBeside(mode_t modeOfOld) {
    if (modeOfOld != 0 && access(path_.c_str(), W_OK) != 0) fail("cannot open for writing");
    const std::filesystem::path name = target_.parent_path() / temporaryName();
    descriptor_ = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor_ < 0) fail("cannot create");
    temporary_ = name;
    if (modeOfOld != 0) static_cast<void>(fchmod(descriptor_, modeOfOld & 0777));
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0) close(descriptor_);
    if (!temporary_.empty()) unlink(temporary_.c_str());
}

void OutputFile::write(std::span<const std::uint8_t> bytes) {
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    if (buffer_.size() >= bufferSize) flush();
}

void OutputFile::flush() {
    std::span<const std::uint8_t> rest(buffer_);
    while (!rest.empty()) {
        const ssize_t written = ::write(descriptor_, rest.data(), rest.size());
        if (written >= 0)
            rest = rest.subspan(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            fail("cannot write");
    }
    buffer_.clear();
}

void OutputFile::finish() {
    flush();
    if (close(std::exchange(descriptor_, -1)) != 0) fail("cannot write");
    if (temporary_.empty()) return;
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) fail("cannot put in place");
    temporary_.clear();
}

void OutputFile::fail(const char* action) const {
    throw FileError(path_, action, errno);
}

}  // namespace mvrtpfec
