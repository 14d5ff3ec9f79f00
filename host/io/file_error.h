#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

#include "platform/files/utf8_path.h"

namespace mvrtpfec {

/// A file that cannot be read or written as asked. what() is one line, ready to be shown, that begins
/// with the file's name.
class FileError : public std::runtime_error {
public:
    FileError(const std::filesystem::path& path, const std::string& message)
        : std::runtime_error(platform::utf8From(path) + ": " + message) {}

    /// "NAME: ACTION: the system's reason", for a failed call that has set errno to `error`.
    FileError(const std::filesystem::path& path, const std::string& action, int error)
        : FileError(path, action + ": " + std::generic_category().message(error)) {}
};

}  // namespace mvrtpfec
