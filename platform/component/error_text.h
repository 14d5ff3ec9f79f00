#pragma once

#include <array>
#include <cstddef>

#include "platform/hresult.h"

namespace platform {

/// As many characters as the media framework's longest text takes.
using ErrorTextBuffer = std::array<char, 160>;

/// Writes the media framework's text for a code into the buffer and returns its length, 0 for a code
/// without a text. On Windows the text is the framework's own, in the user's language and line ends
/// included; elsewhere a short English one for the failure codes that platform/hresult.h names.
std::size_t frameworkErrorText(HRESULT code, ErrorTextBuffer& buffer) noexcept;

}  // namespace platform
