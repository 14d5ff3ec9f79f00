#include "platform/files/file_errors-posix.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <sys/stat.h>

#include "platform/files/file_system.h"

namespace platform {

namespace {

struct Pair {
    int error;
    DWORD win32;
};

constexpr std::array<Pair, 20> table{{{EACCES, ERROR_ACCESS_DENIED},
                                      {EPERM, ERROR_ACCESS_DENIED},
                                      {EISDIR, ERROR_ACCESS_DENIED},
                                      {ENOTDIR, ERROR_PATH_NOT_FOUND},
                                      {EEXIST, ERROR_ALREADY_EXISTS},
                                      {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
                                      {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
                                      {EMFILE, 4},
                                      {ENFILE, 4},
                                      {EXDEV, 17},
                                      {EROFS, 19},
                                      {EBUSY, 32},
                                      {ETXTBSY, 32},
                                      {EINVAL, 87},
                                      {ENOSPC, 112},
                                      {EDQUOT, 112},
                                      {ENAMETOOLONG, 206},
                                      {EFBIG, 223},
                                      {EIO, 1117},
                                      {ELOOP, 1921}}};

constexpr DWORD generalFailure = 31;

bool hasParent(const std::string& path) noexcept {
    const auto end = path.find_last_not_of('/');
    const auto slash = end == std::string::npos ? end : path.rfind('/', end);
    if (slash == std::string::npos) return true;
    try {
        struct stat status {};
        return stat(slash == 0 ? "/" : path.substr(0, slash).c_str(), &status) == 0;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace

void setFileError(int error, const std::string& path) noexcept {
    if (error == ENOENT) return SetLastError(hasParent(path) ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND);
    const auto found = std::ranges::find(table, error, &Pair::error);
    SetLastError(found != table.end() ? found->win32 : generalFailure);
}

BOOL fileFailure(const std::string& path) noexcept {
    setFileError(errno, path);
    return FALSE;
}

}  // namespace platform
