#pragma once

#include <system_error>

namespace platform {

/// GetLastError() with the category that its number belongs to.
std::error_code lastError() noexcept;

}  // namespace platform
