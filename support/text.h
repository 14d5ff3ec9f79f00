#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/text_encoding.h"

namespace mvn {

/// A piece of encoded text, converted to its encoding when it is made.
class Text {
public:
    /// Decodes `count` bytes strictly and encodes them anew. Throws TextException for malformed input,
    /// for a code point that is 0, a surrogate or above 0x10FFFF (text has no NUL inside), and for an
    /// encoding that isn't supported. `bytes` may be null when `count` is 0.
    Text(const std::uint8_t* bytes, std::size_t count, TextEncoding source, TextEncoding target);

    TextEncoding encoding() const noexcept { return encoding_; }
    const std::vector<std::uint8_t>& bytes() const noexcept { return bytes_; }

private:
    TextEncoding encoding_;
    std::vector<std::uint8_t> bytes_;
};

}  // namespace mvn
