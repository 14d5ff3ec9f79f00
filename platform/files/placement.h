#pragma once

#include <filesystem>
#include <string_view>

namespace platform {

/// What a narrow path of file_system.h is for the standard library.
std::filesystem::path standardPath(std::string_view path);

/// Whether a path leads to a file or a directory, or to where something is or would be in it, however both
/// are written and whatever links they go through. Narrow paths of file_system.h.
bool leadsInto(std::string_view path, std::string_view place);

}  // namespace platform
