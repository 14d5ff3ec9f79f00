#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/file_system.h"
#include "support/errors.h"

namespace mvn {

using FileException = ExceptionTemplate<File>;

/// A path and what can be done with what stands there. Paths are narrow, with backslashes between their
/// components on every system (platform/files/file_system.h). Failures throw FileException unless said
/// otherwise and leave undone what had not been done yet; nothing is rolled back. No locking.
class File {
public:
    using Visitor = std::function<void(const File& child, bool isDirectory)>;

    /// Leading backslashes stay with the first component, "." and empty components behind it go; ".." stays.
    /// Throws for a path without any component.
    explicit File(std::string_view path);

    const std::vector<std::string>& Components() const noexcept { return components_; }
    /// Joined with single backslashes.
    const std::string& Path() const noexcept { return path_; }
    File Child(const std::string& name) const;

    /// Creates the directory and those above it that are missing. A file in its place is removed.
    void EnsureDirectory() const;
    void RemoveFile() const;
    /// With everything in it. A link is removed, not followed.
    void RemoveDirectory() const;
    /// Whatever it is; nothing when there is nothing.
    void Remove() const;
    /// Calls the visitor with each entry, a link to a directory counting as one. Throws std::runtime_error
    /// for what is no directory.
    void Enumerate(const Visitor& visit) const;
    /// A file, in place of what stands there, or the content of a directory into another. Throws
    /// std::runtime_error: for what isn't there, would be copied onto or into itself, or stands in the tree
    /// that it would replace, with nothing touched. Two names of one file are the same file, however each is
    /// written.
    void Copy(const File& destination) const;

private:
    explicit File(std::vector<std::string> components);

    void removeEmptied() const;

    std::vector<std::string> components_;
    std::string path_;
};

}  // namespace mvn
