#pragma once

#include <string>

#include "platform/threads/sync.h"

namespace platform {

/// The last error that Windows would set where an operation on `path` failed here with errno.
void setFileError(int error, const std::string& path) noexcept;

/// FALSE, with that set from errno.
BOOL fileFailure(const std::string& path) noexcept;

}  // namespace platform
