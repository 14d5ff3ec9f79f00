#include "support/string_format.h"

#include <cstdarg>

#include "platform/text/bounded_format.h"

namespace mvn {
namespace {

constexpr std::size_t firstCapacity = 256;

/// Formats into a new buffer of that capacity; std::string adds the spare zero byte.
[[gnu::format(printf, 3, 0)]] int formatInto(std::string& buffer, std::size_t capacity, const char* format,
                                             va_list arguments) {
    buffer.assign(capacity, '\0');
    va_list pass;
    va_copy(pass, arguments);
    const int result = platform::boundedFormat(buffer.data(), capacity, format, pass);
    va_end(pass);
    return result;
}

[[gnu::format(printf, 1, 0)]] std::string formatDoubling(const char* format, va_list arguments) {
    std::string buffer;
    std::size_t capacity = firstCapacity;
    while (formatInto(buffer, capacity, format, arguments) == platform::formatTruncated &&
           capacity < maxFormattedLength)
        capacity *= 2;
    return buffer.c_str();
}

}  // namespace

std::string stringFormat(const char* format, ...) {
    if (format == nullptr) return {};
    va_list arguments;
    va_start(arguments, format);
    std::string text = formatDoubling(format, arguments);
    va_end(arguments);
    return text;
}

}  // namespace mvn
