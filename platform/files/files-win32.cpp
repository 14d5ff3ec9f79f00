#include <algorithm>
#include <climits>
#include <memory>
#include <string>

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include "platform/files/files.h"
#include "platform/types.h"

namespace platform {

namespace fs = std::filesystem;

namespace {

struct HandleClosing {
    using pointer = HANDLE;
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};

using OwnedHandle = std::unique_ptr<HANDLE, HandleClosing>;

constexpr DWORD longestPath = 32767;
constexpr int forWriting = _O_WRONLY | _O_BINARY | _O_NOINHERIT;

/// To ask about it, links followed; null where there is none.
OwnedHandle openForAsking(const fs::path& path) noexcept {
    constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE opened = CreateFileW(path.c_str(), 0, shareAll, nullptr, OPEN_EXISTING, 0, nullptr);
    return OwnedHandle(opened == INVALID_HANDLE_VALUE ? nullptr : opened);
}

std::wstring fullName(const fs::path& path) {
    std::wstring full(longestPath, L'\0');
    full.resize(GetFullPathNameW(path.c_str(), longestPath, full.data(), nullptr));
    return full;
}

}  // namespace

std::FILE* openForReading(const fs::path& path) noexcept {
    return _wfopen(path.c_str(), L"rbN");
}

std::int64_t positionOf(std::FILE* stream) noexcept {
    return _ftelli64(stream);
}

std::FILE* standardInput() noexcept {
    return _fdopen(duplicateDescriptor(0), "rb");
}

int openForWriting(const fs::path& path) noexcept {
    return _wopen(path.c_str(), forWriting);
}

int createForWriting(const fs::path& path) noexcept {
    return _wopen(path.c_str(), forWriting | _O_CREAT | _O_EXCL, _S_IREAD | _S_IWRITE);
}

int openForAppending(const fs::path& path, bool emptied) noexcept {
    return _wopen(path.c_str(), forWriting | _O_CREAT | _O_APPEND | (emptied ? _O_TRUNC : 0),
                  _S_IREAD | _S_IWRITE);
}

int duplicateDescriptor(int descriptor) noexcept {
    return _dup(descriptor);
}

std::ptrdiff_t writeSome(int descriptor, std::span<const std::uint8_t> bytes) noexcept {
    const std::size_t count = std::min<std::size_t>(bytes.size(), INT_MAX);
    return _write(descriptor, bytes.data(), static_cast<unsigned>(count));
}

/// The system has no way to ask.
bool waitUntilWritable(int, std::chrono::milliseconds) noexcept {
    return true;
}

bool closeDescriptor(int descriptor) noexcept {
    return _close(descriptor) == 0;
}

bool meansClosedPipe(int error) noexcept {
    // Of a pipe that is being closed the runtime knows nothing better.
    return error == EPIPE || error == EINVAL;
}

bool namesDevice(const fs::path& path) {
    return fullName(path).starts_with(LR"(\\.\)");
}

bool nameOneFile(const fs::path& one, const fs::path& other) {
    const OwnedHandle first = openForAsking(one);
    const OwnedHandle second = openForAsking(other);
    BY_HANDLE_FILE_INFORMATION a;
    BY_HANDLE_FILE_INFORMATION b;
    // Devices tell nothing, and nobody loses what they hold.
    if (first || second)
        return first && second && GetFileInformationByHandle(first.get(), &a) != 0 &&
               GetFileInformationByHandle(second.get(), &b) != 0 &&
               a.dwVolumeSerialNumber == b.dwVolumeSerialNumber && a.nFileIndexHigh == b.nFileIndexHigh &&
               a.nFileIndexLow == b.nFileIndexLow;
    const std::wstring name = fullName(one);
    const std::wstring otherName = fullName(other);
    return CompareStringOrdinal(name.c_str(), -1, otherName.c_str(), -1, TRUE) == CSTR_EQUAL;
}

bool mayWrite(const fs::path& path) noexcept {
    constexpr int writing = 2;
    return _waccess(path.c_str(), writing) == 0;
}

/// All the way: the system resolves links itself.
std::optional<fs::path> linkTarget(const fs::path& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return std::nullopt;
    const OwnedHandle file = openForAsking(path);
    if (!file) return std::nullopt;
    std::wstring target(longestPath, L'\0');
    target.resize(GetFinalPathNameByHandleW(file.get(), target.data(), longestPath, FILE_NAME_NORMALIZED));
    if (target.empty() || fs::path(target) == path) return std::nullopt;
    return target;
}

}  // namespace platform
