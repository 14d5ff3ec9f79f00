#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/errors.h"

namespace mvn {

using DriveException = ExceptionTemplate<Drive>;

/// A volume: a drive on Windows, elsewhere a mounted file system.
class Drive {
public:
    /// The volume that holds a path. Throws DriveException when there is none and when it can't be used.
    explicit Drive(const std::string& path);

    const std::string& Root() const noexcept { return root_; }
    /// Ready and available when it was asked.
    bool IsReady() const noexcept { return isReady_; }
    /// Bytes. Throws DriveException.
    std::uint64_t TotalSpace() const;

    /// The roots of all volumes. Throws DriveException.
    static std::vector<std::string> List();

private:
    std::string root_;
    bool isReady_ = false;
};

}  // namespace mvn
