#pragma once
// Files, directories and volumes under the system's own names. Elsewhere than on Windows a small layer of
// ours:
//
// - Paths may have backslashes and slashes. Narrow paths are UTF-8; a byte of a name that is no valid UTF-8,
// and
//   a backslash in a name, stand as U+F700 + the byte, both ways and in wide names too, and so does each byte
//   of a character from U+F700 to U+F7FF itself. Thus every name can be listed, opened and removed.
// - A symbolic link has the attribute FILE_ATTRIBUTE_REPARSE_POINT, and that of a directory when it leads to
//   one. Removing it never touches what it leads to.
// - Failures set the last error as Windows would.
// - Volumes are the mount points of file systems that hold files, numbered as the system lists them.

#include "platform/threads/sync.h"

#ifdef _WIN32

#include <shlwapi.h>

#undef CopyFile
#undef RemoveDirectory

#else

constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
constexpr DWORD ERROR_ACCESS_DENIED = 5;
constexpr DWORD ERROR_NO_MORE_FILES = 18;
constexpr DWORD ERROR_NOT_READY = 21;
constexpr DWORD ERROR_DIR_NOT_EMPTY = 145;
constexpr DWORD ERROR_ALREADY_EXISTS = 183;
constexpr DWORD ERROR_DIRECTORY = 267;

constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400;
constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
constexpr int MAX_PATH = 260;
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(~std::uintptr_t{0});

/// What of it is filled in.
struct WIN32_FIND_DATAW {
    DWORD dwFileAttributes;
    WCHAR cFileName[MAX_PATH];
};

struct ULARGE_INTEGER {
    std::uint64_t QuadPart;
};

DWORD GetFileAttributesA(const char* path);
BOOL DeleteFileA(const char* path);
BOOL CreateDirectoryA(const char* path, SECURITY_ATTRIBUTES*);
BOOL RemoveDirectoryA(const char* path);
BOOL CopyFileA(const char* from, const char* to, BOOL failIfExists);

/// The entries of a directory, "." and ".." among them. The pattern is a directory's path and an asterisk.
HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* data);
BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* data);
BOOL FindClose(HANDLE search);

/// -1 when there is no volume that holds the path.
int PathGetDriveNumberA(const char* path);
/// Writes at most MAX_PATH characters.
char* PathBuildRootA(char* root, int drive);
/// Only whether there is such a volume can be asked; nothing is written.
BOOL GetVolumeInformationA(const char* root, char* name, DWORD nameSize, DWORD* serialNumber,
                           DWORD* longestComponent, DWORD* flags, char* fileSystem, DWORD fileSystemSize);
/// Bytes; the pointers may be null.
BOOL GetDiskFreeSpaceExA(const char* path, ULARGE_INTEGER* available, ULARGE_INTEGER* total,
                         ULARGE_INTEGER* free);
/// The roots of all volumes, each with a zero behind it and one more at the end. The length without that one,
/// or the size that is needed when `size` characters are too few; 0 for a failure.
DWORD GetLogicalDriveStringsA(DWORD size, char* roots);

#endif
