#include <cstdio>

#include "platform/text/bounded_format.h"

namespace platform {

int boundedFormat(char* buffer, std::size_t capacity, const char* format, va_list arguments) noexcept {
    const int length = std::vsnprintf(buffer, capacity + 1, format, arguments);
    if (length < 0) return formatFailed;
    return static_cast<std::size_t>(length) > capacity ? formatTruncated : length;
}

}  // namespace platform
