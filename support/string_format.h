#pragma once

#include <cstddef>
#include <string>

namespace mvn {

/// Longest text that stringFormat makes, in bytes; a longer one is cut here.
inline constexpr std::size_t maxFormattedLength = 16 * 1024 * 1024;

/// A printf-style message, its arguments checked by the compiler. Null gives the empty text, and a NUL
/// byte, say from %c, ends the text. When an argument can't be converted (a wide character without a
/// place in the locale), the text ends where the runtime gave up. Throws std::bad_alloc and nothing
/// else; its buffers take at most about three times the memory of the text.
[[gnu::format(printf, 1, 2)]] std::string stringFormat(const char* format, ...);

}  // namespace mvn
