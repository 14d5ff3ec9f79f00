#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace platform {

// Paths as texts are in UTF-8 everywhere; std::filesystem's own conversions follow the system's code page or
// the locale.

inline std::filesystem::path pathFromUtf8(std::string_view text) {
    return std::u8string(text.begin(), text.end());
}

inline std::string utf8From(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

}  // namespace platform
