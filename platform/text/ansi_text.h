#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

namespace platform {

// The system's 8-bit text, in its ANSI code page on Windows; natively every byte is a character of its own,
// so that any path comes back as it was. What can't be converted becomes the code page's replacement
// character. Both throw std::bad_alloc.

std::basic_string<WCHAR> wideFromAnsi(std::string_view text);
std::string ansiFromWide(std::basic_string_view<WCHAR> text);

}  // namespace platform
