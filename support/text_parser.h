#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "support/text_encoding.h"

namespace mvn {

/// Decodes bytes into code points. Without state, so that one parser may serve several threads.
class TextParser {
public:
    /// Replaces what `out` holds by the code points of all of `in`, and returns `out`. Malformed input
    /// throws TextException, which leaves in `out` what came before it; `lenient` skips it instead and
    /// throws nothing but std::bad_alloc.
    virtual CodePoints& parse(CodePoints& out, std::span<const std::uint8_t> in, bool lenient) const = 0;

    virtual ~TextParser() = default;
};

/// UTF-8 by form alone: overlong sequences that don't begin with C0 or C1, surrogates and values up to
/// 0x13FFFF come out as they are written. Lenient, a byte that breaks a sequence is lost with it.
class TextParserUTF8 : public TextParser {
public:
    CodePoints& parse(CodePoints& out, std::span<const std::uint8_t> in, bool lenient) const override;
};

/// UTF-16, low byte first. A low surrogate on its own comes out as it is; lenient, any unit completes
/// the pair that a high surrogate began. The odd byte at the end of an odd input is no input.
class TextParserUTF16LE : public TextParser {
public:
    CodePoints& parse(CodePoints& out, std::span<const std::uint8_t> in, bool lenient) const override;
};

/// A new parser; null for an encoding that isn't supported.
std::unique_ptr<TextParser> CreateTextParser(TextEncoding encoding);

}  // namespace mvn
