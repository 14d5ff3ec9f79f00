#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "support/text_encoding.h"

namespace mvn {

/// Encodes code points into bytes; checks none of them. Without state, so that one emitter may serve
/// several threads.
class TextEmitter {
public:
    /// Replaces what `out` holds by all of `in`, encoded.
    virtual void emit(std::vector<std::uint8_t>& out, std::span<const std::uint32_t> in) const = 0;

    virtual ~TextEmitter() = default;
};

/// UTF-8 in one to four bytes; of a value beyond 21 bits the lead byte keeps what fits.
class TextEmitterUTF8 : public TextEmitter {
public:
    void emit(std::vector<std::uint8_t>& out, std::span<const std::uint32_t> in) const override;
};

/// UTF-16, low byte first. A surrogate's own code point is written as a pair too, computed modulo 2^32
/// like any other, so that the output never holds half a pair; it reads back as another code point.
class TextEmitterUTF16LE : public TextEmitter {
public:
    void emit(std::vector<std::uint8_t>& out, std::span<const std::uint32_t> in) const override;
};

/// A new emitter; null for an encoding that isn't supported.
std::unique_ptr<TextEmitter> CreateTextEmitter(TextEncoding encoding);

}  // namespace mvn
