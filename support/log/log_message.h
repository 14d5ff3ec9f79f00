#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace mvn::log {

/// Bytes of the buffer that every formatting step uses: a longer message is cut to its first 259 characters.
inline constexpr std::size_t messageSize = 260;

using MessageBuffer = std::array<char, messageSize>;

/// Formats a message, cut to what the buffer takes. One that can't be formatted is empty.
[[gnu::format(printf, 2, 0)]] inline void formatMessage(MessageBuffer& buffer, const char* format,
                                                        va_list arguments) noexcept {
    if (std::vsnprintf(buffer.data(), buffer.size(), format, arguments) < 0) buffer[0] = '\0';
}

}  // namespace mvn::log
