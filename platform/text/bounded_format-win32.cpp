#include <stdio.h>

#include "platform/text/bounded_format.h"

namespace platform {

int boundedFormat(char* buffer, std::size_t capacity, const char* format, va_list arguments) noexcept {
    va_list again;
    va_copy(again, arguments);
    int length = _vsnprintf(buffer, capacity, format, arguments);
    // -1 means a longer text or no text at all; only the count of a dry run tells which.
    if (length < 0) length = _vscprintf(format, again) < 0 ? formatFailed : formatTruncated;
    va_end(again);
    return length;
}

}  // namespace platform
