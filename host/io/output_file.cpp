#include "host/io/output_file.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "host/io/file_error.h"
#include "platform/files/files.h"
#include "platform/files/utf8_path.h"

namespace mvrtpfec {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t bufferSize = 64 * 1024;

/// The descriptor that a /dev path stands for. Opening such a path again would start at the beginning
/// of a file that the shell appends to, so these are duplicated instead.
std::optional<int> descriptorNamed(std::string_view path) {
    if (path == "/dev/stdout") return 1;
    if (path == "/dev/stderr") return 2;
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
fs::path followed(fs::path path) {
    constexpr int maxLinks = 40;
    for (int i = 0; i < maxLinks && !descriptorNamed(platform::utf8From(path)); ++i) {
        std::optional<fs::path> target = platform::linkTarget(path);
        if (!target) break;
        path = std::move(*target);
    }
    return path;
}

/// The system sets a limit to the length of names, which the file's own may have used up.
fs::path firstPart(const fs::path& target) {
    constexpr std::size_t longestName = 240;
    fs::path name = target.filename().native().substr(0, longestName);
    return target.parent_path() / (name += ".part");
}

}  // namespace

OutputFile::OutputFile(fs::path path) : path_(std::move(path)) {
    buffer_.reserve(bufferSize);
    std::error_code error;
    const fs::file_status old = fs::status(path_, error);
    target_ = followed(path_);
    if (const std::optional<int> given = descriptorNamed(platform::utf8From(target_)))
        descriptor_ = platform::duplicateDescriptor(*given);
    else if (platform::namesDevice(path_) || (fs::exists(old) && !fs::is_regular_file(old)))
        descriptor_ = platform::openForWriting(path_);
    else
        openBeside(old);
    if (descriptor_ < 0) fail("cannot open for writing");
}

/// `old` is the file to be replaced, if there is one.
void OutputFile::openBeside(const fs::file_status& old) {
    const bool replaces = fs::exists(old);
    if (replaces && !platform::mayWrite(path_)) fail("cannot open for writing");
    temporary_ = firstPart(target_);
    for (int count = 2; (descriptor_ = platform::createForWriting(temporary_)) < 0; ++count) {
        if (errno != EEXIST) fail("cannot create");
        (temporary_ = firstPart(target_)) += std::to_string(count);
    }
    std::error_code ignored;
    if (replaces) fs::permissions(temporary_, old.permissions() & fs::perms(0777), ignored);
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0) platform::closeDescriptor(descriptor_);
    std::error_code ignored;
    if (!temporary_.empty()) fs::remove(temporary_, ignored);
}

void OutputFile::write(std::span<const std::uint8_t> bytes) {
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    if (buffer_.size() >= bufferSize) flush();
}

void OutputFile::flush() {
    std::span<const std::uint8_t> rest(buffer_);
    while (!rest.empty()) {
        const std::ptrdiff_t written = platform::writeSome(descriptor_, rest);
        if (written >= 0)
            rest = rest.subspan(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            fail("cannot write");
    }
    buffer_.clear();
}

bool OutputFile::isWritableWithin(std::chrono::milliseconds time) const noexcept {
    return platform::waitUntilWritable(descriptor_, time);
}

void OutputFile::keep() noexcept {
    try {
        flush();
    } catch (const std::exception&) {
        buffer_.clear();
    }
    try {
        if (descriptor_ >= 0) finish();
    } catch (const std::exception&) {
        // The temporary file goes with this object.
    }
}

void OutputFile::finish() {
    flush();
    if (!platform::closeDescriptor(std::exchange(descriptor_, -1))) fail("cannot write");
    if (temporary_.empty()) return;
    std::error_code error;
    fs::rename(temporary_, target_, error);
    if (error) throw FileError(path_, "cannot put in place", error.default_error_condition().value());
    temporary_.clear();
}

void OutputFile::fail(const char* action) const {
    throw FileError(path_, action, errno);
}

std::vector<fs::path> unfinishedOf(const fs::path& path) {
    std::vector<fs::path> found;
    if (!path.has_filename()) return found;
    const fs::path first = firstPart(followed(path));
    const fs::path folder = first.has_parent_path() ? first.parent_path() : fs::path(".");
    const auto isPart = [name = platform::utf8From(first.filename())](std::string_view other) {
        return other.starts_with(name) &&
               other.find_first_not_of("0123456789", name.size()) == std::string_view::npos;
    };
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        if (isPart(platform::utf8From(entry->path().filename())))
            found.push_back(first.parent_path() / entry->path().filename());
    std::ranges::sort(found);
    return found;
}

}  // namespace mvrtpfec
