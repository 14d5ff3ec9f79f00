#pragma once

#include <cstdarg>
#include <cstddef>

namespace platform {

/// What boundedFormat() returns instead of a length.
inline constexpr int formatTruncated = -1;
inline constexpr int formatFailed = -2;

/// The Windows runtime's `_vsnprintf`, on every target: formats into `buffer`, at most `capacity` bytes,
/// and returns the length of the text, or formatTruncated when it is longer than that. A text that the
/// runtime can't produce at all (a wide character without a place in the locale, more than INT_MAX
/// bytes) is formatFailed, where `_vsnprintf` says -1 as well.
///
/// `buffer` is zeroed and holds capacity + 1 bytes, the last of which stays zero. `arguments` is used
/// up. The conversions are those of the target's own runtime.
[[gnu::format(printf, 3, 0)]] int boundedFormat(char* buffer, std::size_t capacity, const char* format,
                                                va_list arguments) noexcept;

}  // namespace platform
