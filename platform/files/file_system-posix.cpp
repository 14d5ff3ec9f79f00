#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/file_errors-posix.h"
#include "platform/files/file_system.h"
#include "platform/files/path_text-posix.h"

namespace platform {
namespace {

DWORD attributesOf(const struct stat& status) noexcept {
    return S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
}

/// Of an entry of the directory, or of a path where that is AT_FDCWD.
DWORD attributesAt(int directory, const char* name) noexcept {
    struct stat status {};
    if (fstatat(directory, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return INVALID_FILE_ATTRIBUTES;
    if (!S_ISLNK(status.st_mode)) return attributesOf(status);
    struct stat target {};
    const bool leads = fstatat(directory, name, &target, 0) == 0 && S_ISDIR(target.st_mode);
    return FILE_ATTRIBUTE_REPARSE_POINT | (leads ? FILE_ATTRIBUTE_DIRECTORY : 0);
}

bool isDirectoryLink(const std::string& path) noexcept {
    constexpr DWORD both = FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY;
    return attributesAt(AT_FDCWD, path.c_str()) == both;
}

/// A listing that goes on.
class Search {
public:
    explicit Search(DIR* directory) noexcept : directory_(directory) {}

    bool next(WIN32_FIND_DATAW& data) {
        errno = 0;
        const dirent* const entry = readdir(directory_.get());
        if (entry == nullptr) {
            SetLastError(ERROR_NO_MORE_FILES);
            return false;
        }
        data = {};
        data.dwFileAttributes = attributesAt(dirfd(directory_.get()), entry->d_name);
        // Gone since, or not ours to look at.
        if (data.dwFileAttributes == INVALID_FILE_ATTRIBUTES) data.dwFileAttributes = FILE_ATTRIBUTE_NORMAL;
        wideName(entry->d_name).copy(data.cFileName, MAX_PATH - 1);
        return true;
    }

private:
    struct Closes {
        void operator()(DIR* directory) const noexcept { closedir(directory); }
    };
    std::unique_ptr<DIR, Closes> directory_;
};

struct Descriptor {
    ~Descriptor() {
        if (number >= 0) close(number);
    }
    int number;
};

bool writeAll(int descriptor, const char* bytes, std::size_t count) noexcept {
    while (count > 0) {
        const ssize_t written = write(descriptor, bytes, count);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

bool copyContent(int from, int to) noexcept {
    char buffer[16384];
    for (;;) {
        const ssize_t came = read(from, buffer, sizeof buffer);
        if (came < 0 && errno == EINTR) continue;
        if (came <= 0) return came == 0;
        if (!writeAll(to, buffer, static_cast<std::size_t>(came))) return false;
    }
}

BOOL copyFile(const std::string& from, const std::string& to, bool mayReplace) noexcept {
    const Descriptor source{open(from.c_str(), O_RDONLY | O_CLOEXEC)};
    struct stat status {};
    if (source.number < 0 || fstat(source.number, &status) != 0) return fileFailure(from);
    if (S_ISDIR(status.st_mode)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    const int creation = mayReplace ? O_CREAT | O_TRUNC : O_CREAT | O_EXCL;
    const Descriptor target{open(to.c_str(), O_WRONLY | O_CLOEXEC | creation, status.st_mode & 0777)};
    if (target.number < 0) {
        constexpr DWORD fileExists = 80;
        if (errno != EEXIST) return fileFailure(to);
        SetLastError(fileExists);
        return FALSE;
    }
    return copyContent(source.number, target.number) ? TRUE : fileFailure(to);
}

}  // namespace
}  // namespace platform

using platform::fileFailure;
using platform::nativePath;

DWORD GetFileAttributesA(const char* path) {
    const std::string native = nativePath(std::string_view(path));
    const DWORD attributes = platform::attributesAt(AT_FDCWD, native.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) fileFailure(native);
    return attributes;
}

BOOL DeleteFileA(const char* path) {
    const std::string native = nativePath(std::string_view(path));
    if (platform::isDirectoryLink(native)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    return unlink(native.c_str()) == 0 ? TRUE : fileFailure(native);
}

BOOL CreateDirectoryA(const char* path, SECURITY_ATTRIBUTES*) {
    const std::string native = nativePath(std::string_view(path));
    if (mkdir(native.c_str(), 0777) == 0) return TRUE;
    if (errno != ENOENT) return fileFailure(native);
    SetLastError(ERROR_PATH_NOT_FOUND);
    return FALSE;
}

BOOL RemoveDirectoryA(const char* path) {
    const std::string native = nativePath(std::string_view(path));
    const int result = platform::isDirectoryLink(native) ? unlink(native.c_str()) : rmdir(native.c_str());
    if (result == 0) return TRUE;
    if (errno == EEXIST) errno = ENOTEMPTY;
    const bool isOther = errno == ENOTDIR && GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES;
    if (isOther) {
        SetLastError(ERROR_DIRECTORY);
        return FALSE;
    }
    return fileFailure(native);
}

BOOL CopyFileA(const char* from, const char* to, BOOL failIfExists) {
    return platform::copyFile(nativePath(std::string_view(from)), nativePath(std::string_view(to)),
                              failIfExists == FALSE);
}

HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* data) {
    std::string native = nativePath(std::basic_string_view<WCHAR>(pattern));
    if (native.ends_with("/*")) native.resize(native.size() - 1);
    DIR* const directory = opendir(native.c_str());
    if (directory == nullptr) {
        fileFailure(native);
        return INVALID_HANDLE_VALUE;
    }
    auto search = std::make_unique<platform::Search>(directory);
    if (!search->next(*data)) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    return search.release();
}

BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* data) {
    return static_cast<platform::Search*>(search)->next(*data) ? TRUE : FALSE;
}

BOOL FindClose(HANDLE search) {
    delete static_cast<platform::Search*>(search);  // NOLINT(cppcoreguidelines-owning-memory)
    return TRUE;
}
