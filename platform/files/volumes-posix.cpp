#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <mntent.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include "platform/files/file_errors-posix.h"
#include "platform/files/file_system.h"
#include "platform/files/path_text-posix.h"

namespace platform {
namespace {

/// Kinds of file systems that hold no files of anybody's.
constexpr std::array<std::string_view, 22> withoutFiles{
    "autofs",   "binfmt_misc", "bpf",        "cgroup",     "cgroup2",   "configfs", "debugfs", "devpts",
    "devtmpfs", "efivarfs",    "fuse.lxcfs", "fusectl",    "hugetlbfs", "mqueue",   "nsfs",    "proc",
    "pstore",   "ramfs",       "rpc_pipefs", "securityfs", "sysfs",     "tracefs"};

bool isDirectory(const std::string& path) noexcept {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// In the system's order, each once.
std::vector<std::string> mountPoints() {
    struct Closes {
        void operator()(std::FILE* file) const noexcept { endmntent(file); }
    };
    std::vector<std::string> points;
    const std::unique_ptr<std::FILE, Closes> mounts(setmntent("/proc/self/mounts", "re"));
    if (mounts == nullptr) return points;
    mntent entry{};
    std::array<char, 8192> text;
    while (getmntent_r(mounts.get(), &entry, text.data(), static_cast<int>(text.size())) != nullptr) {
        const std::string point = entry.mnt_dir;
        if (std::ranges::find(withoutFiles, entry.mnt_type) != withoutFiles.end()) continue;
        if (std::ranges::find(points, point) == points.end() && isDirectory(point)) points.push_back(point);
    }
    return points;
}

bool holds(const std::string& point, const std::string& path) {
    if (point == "/") return true;
    return path.starts_with(point) && (path.size() == point.size() || path[point.size()] == '/');
}

}  // namespace
}  // namespace platform

int PathGetDriveNumberA(const char* path) {
    std::error_code error;
    const auto real = std::filesystem::weakly_canonical(platform::nativePath(std::string_view(path)), error);
    if (error || real.empty()) return -1;
    const auto points = platform::mountPoints();
    int found = -1;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (!platform::holds(points[i], real)) continue;
        if (found < 0 || points[i].size() > points[static_cast<std::size_t>(found)].size())
            found = static_cast<int>(i);
    }
    return found;
}

char* PathBuildRootA(char* root, int drive) {
    const auto points = platform::mountPoints();
    const auto index = static_cast<std::size_t>(drive);
    const std::string point = drive >= 0 && index < points.size() ? platform::narrowName(points[index]) : "";
    root[point.copy(root, MAX_PATH - 1)] = '\0';
    return root;
}

BOOL GetVolumeInformationA(const char* root, char*, DWORD, DWORD*, DWORD*, DWORD*, char*, DWORD) {
    return GetDiskFreeSpaceExA(root, nullptr, nullptr, nullptr);
}

BOOL GetDiskFreeSpaceExA(const char* path, ULARGE_INTEGER* available, ULARGE_INTEGER* total,
                         ULARGE_INTEGER* free) {
    const std::string native = platform::nativePath(std::string_view(path));
    struct statvfs status {};
    if (statvfs(native.c_str(), &status) != 0) return platform::fileFailure(native);
    const std::uint64_t unit = status.f_frsize;
    if (available != nullptr) available->QuadPart = status.f_bavail * unit;
    if (total != nullptr) total->QuadPart = status.f_blocks * unit;
    if (free != nullptr) free->QuadPart = status.f_bfree * unit;
    return TRUE;
}

DWORD GetLogicalDriveStringsA(DWORD size, char* roots) {
    std::string all;
    for (const std::string& point : platform::mountPoints()) all += platform::narrowName(point) + '\0';
    if (all.size() + 1 > size) return static_cast<DWORD>(all.size() + 1);
    all += '\0';
    all.copy(roots, all.size());
    return static_cast<DWORD>(all.size() - 1);
}
