#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

namespace platform {

/// The bytes that the system takes for a path of file_system.h.
std::string nativePath(std::string_view path);
std::string nativePath(std::basic_string_view<WCHAR> path);

/// A name as the system has it, for file_system.h.
std::basic_string<WCHAR> wideName(std::string_view name);
std::string narrowName(std::string_view name);

}  // namespace platform
