#include "support/files/drive.h"

#include <array>

#include "platform/files/file_system.h"
#include "support/string_format.h"

namespace mvn {

namespace {

std::string rootOf(const std::string& path) {
    const int number = PathGetDriveNumberA(path.c_str());
    if (number < 0)
        throw DriveException(stringFormat("Could not get drive number from file name %s.", path.c_str()));
    std::array<char, MAX_PATH> root{};
    return PathBuildRootA(root.data(), number);
}

const char* reasonOf(DWORD error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
            return "Invalid path";
        case ERROR_ACCESS_DENIED:
            return "Device is not available";
        case ERROR_NOT_READY:
            return "Device is not ready.";
        default:
            return "Could not create drive";
    }
}

}  // namespace

Drive::Drive(const std::string& path) : root_(rootOf(path)) {
    isReady_ =
        GetVolumeInformationA(root_.c_str(), nullptr, 0, nullptr, nullptr, nullptr, nullptr, 0) != FALSE;
    if (!isReady_) throw DriveException(reasonOf(GetLastError()));
}

std::uint64_t Drive::TotalSpace() const {
    ULARGE_INTEGER total{};
    if (!GetDiskFreeSpaceExA(root_.c_str(), nullptr, &total, nullptr))
        throw DriveException("Could not get total space.");
    return total.QuadPart;
}

std::vector<std::string> Drive::List() {
    std::vector<char> text(512);
    DWORD length = 0;
    // What doesn't fit tells the size that it takes.
    while ((length = GetLogicalDriveStringsA(static_cast<DWORD>(text.size()), text.data())) > text.size())
        text.resize(length);
    if (length == 0) throw DriveException("Could not get drive list");
    std::vector<std::string> roots;
    for (const char* root = text.data(); *root != '\0'; root += roots.back().size() + 1)
        roots.emplace_back(root);
    return roots;
}

}  // namespace mvn
