#pragma once

#include <cstdint>
#include <vector>

#include "support/errors.h"

namespace mvn {

/// How text is laid out in bytes (RFC 3629, RFC 2781). Other values may be passed about; nothing
/// supports them.
enum class TextEncoding : std::uint32_t { utf8 = 1, utf16le = 2 };

/// Where encodings meet: Unicode code points, or what malformed input made of them.
using CodePoints = std::vector<std::uint32_t>;

using TextException = ExceptionTemplate<Text, MorvaneException>;

constexpr bool isSurrogate(std::uint32_t codePoint) {
    return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}

}  // namespace mvn
