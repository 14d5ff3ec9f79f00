#include "support/files/file.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platform/files/placement.h"
#include "support/string_format.h"
#include "support/wide_text.h"

namespace mvn {

namespace {

constexpr char separator = '\\';

[[noreturn]] void throwLastError(const char* action, const std::string& path) {
    // NOLINTNEXTLINE(google-runtime-int): what %lu takes
    const auto error = static_cast<unsigned long>(GetLastError());
    throw FileException(stringFormat("could not %s [%s]: Win32 error %lu", action, path.c_str(), error));
}

std::vector<std::string> split(std::string_view path) {
    std::vector<std::string> pieces(1);
    for (const char c : path) {
        if (c == separator)
            pieces.emplace_back();
        else
            pieces.back() += c;
    }
    return pieces;
}

std::vector<std::string> normalised(std::string_view path) {
    std::vector<std::string> components;
    std::string leading;
    for (const std::string& piece : split(path)) {
        if (!components.empty()) {
            if (!piece.empty() && piece != ".") components.push_back(piece);
        } else if (piece.empty()) {
            leading += separator;
        } else {
            components.push_back(leading + piece);
        }
    }
    if (components.empty()) throw FileException(stringFormat("invalid path [%s]", std::string(path).c_str()));
    return components;
}

std::string joined(const std::vector<std::string>& components) {
    std::string path = components.front();
    for (std::size_t i = 1; i < components.size(); ++i) path += separator + components[i];
    return path;
}

bool exists(DWORD attributes) {
    return attributes != INVALID_FILE_ATTRIBUTES;
}

bool isDirectory(DWORD attributes) {
    return exists(attributes) && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool isLink(DWORD attributes) {
    return exists(attributes) && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

/// A listing that is closed in any case.
class Listing {
public:
    explicit Listing(const std::string& path)
        : search_(FindFirstFileW(toWide<WCHAR>(path + separator + '*').c_str(), &data_)) {}
    ~Listing() {
        if (isOpen()) FindClose(search_);
    }
    Listing(const Listing&) = delete;
    Listing& operator=(const Listing&) = delete;

    bool isOpen() const { return search_ != INVALID_HANDLE_VALUE; }
    bool next() { return FindNextFileW(search_, &data_) != FALSE; }
    std::string name() const { return toNarrow(std::basic_string_view<WCHAR>(data_.cFileName)); }
    bool isDirectory() const { return mvn::isDirectory(data_.dwFileAttributes); }

private:
    WIN32_FIND_DATAW data_{};
    HANDLE search_;
};

}  // namespace

File::File(std::string_view path) : File(normalised(path)) {}

File::File(std::vector<std::string> components)
    : components_(std::move(components)), path_(joined(components_)) {}

File File::Child(const std::string& name) const {
    std::vector<std::string> components = components_;
    components.push_back(name);
    return File(std::move(components));
}

void File::EnsureDirectory() const {
    // From the first directory that is there downwards, without a level of the stack for each.
    std::size_t missing = components_.size();
    std::vector<File> above{*this};
    for (; !exists(GetFileAttributesA(above.back().path_.c_str())) && missing > 1; --missing)
        above.push_back(
            File({components_.begin(), components_.begin() + static_cast<std::ptrdiff_t>(missing) - 1}));
    for (auto each = above.rbegin(); each != above.rend(); ++each) {
        const DWORD attributes = GetFileAttributesA(each->path_.c_str());
        if (isDirectory(attributes)) continue;
        if (exists(attributes)) each->RemoveFile();
        if (!CreateDirectoryA(each->path_.c_str(), nullptr)) throwLastError("create directory", each->path_);
    }
}

void File::RemoveFile() const {
    if (!DeleteFileA(path_.c_str())) throwLastError("remove file", path_);
}

/// The tree may be deeper than the stack.
void File::RemoveDirectory() const {
    struct Level {
        File directory;
        std::vector<std::pair<File, bool>> children;
    };
    const auto levelOf = [](const File& directory) {
        Level level{directory, {}};
        if (!isLink(GetFileAttributesA(directory.path_.c_str())))
            directory.Enumerate([&](const File& child, bool is) { level.children.emplace_back(child, is); });
        std::ranges::reverse(level.children);
        return level;
    };
    std::vector<Level> levels{levelOf(*this)};
    while (!levels.empty()) {
        if (levels.back().children.empty()) {
            levels.back().directory.removeEmptied();
            levels.pop_back();
            continue;
        }
        const auto [child, isDirectoryToo] = std::move(levels.back().children.back());
        levels.back().children.pop_back();
        if (isDirectoryToo)
            levels.push_back(levelOf(child));
        else
            child.RemoveFile();
    }
}

void File::removeEmptied() const {
    if (!RemoveDirectoryA(path_.c_str())) throwLastError("remove directory", path_);
}

void File::Remove() const {
    const DWORD attributes = GetFileAttributesA(path_.c_str());
    if (!exists(attributes)) return;
    isDirectory(attributes) ? RemoveDirectory() : RemoveFile();
}

void File::Enumerate(const Visitor& visit) const {
    if (!isDirectory(GetFileAttributesA(path_.c_str())))
        throw std::runtime_error(path_ + " is not a directory");
    Listing listing(path_);
    if (!listing.isOpen()) {
        if (GetLastError() == ERROR_FILE_NOT_FOUND) return;
        throwLastError("enumerate the contents of", path_);
    }
    do {
        const std::string name = listing.name();
        if (name != "." && name != "..") visit(Child(name), listing.isDirectory());
    } while (listing.next());
}

void File::Copy(const File& destination) const {
    const DWORD attributes = GetFileAttributesA(path_.c_str());
    const auto fail = [&] { throw std::runtime_error("cannot copy " + path_ + " to " + destination.path_); };
    // Before anything is removed that may be all there is.
    if (!exists(attributes) || platform::leadsInto(destination.path_, path_)) fail();
    if (isDirectory(attributes)) {
        destination.EnsureDirectory();
        Enumerate([&](const File& child, bool) { child.Copy(destination.Child(child.components_.back())); });
        return;
    }
    if (platform::leadsInto(path_, destination.path_)) fail();
    destination.Remove();
    if (!CopyFileA(path_.c_str(), destination.path_.c_str(), FALSE)) fail();
}

}  // namespace mvn
