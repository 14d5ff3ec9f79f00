#include "support/text_emitter.h"

namespace mvn {
namespace {

using Bytes = std::vector<std::uint8_t>;

void put(Bytes& out, std::uint32_t value) {
    out.push_back(static_cast<std::uint8_t>(value));
}

/// The byte that carries the six bits from `shift` up.
void putContinuation(Bytes& out, std::uint32_t codePoint, unsigned shift) {
    put(out, 0x80 | (codePoint >> shift & 0x3F));
}

void putUtf8(Bytes& out, std::uint32_t codePoint) {
    if (codePoint < 0x80) return put(out, codePoint);
    if (codePoint < 0x800) {
        put(out, 0xC0 | codePoint >> 6);
    } else if (codePoint < 0x10000) {
        put(out, 0xE0 | codePoint >> 12);
        putContinuation(out, codePoint, 6);
    } else {
        put(out, 0xF0 | codePoint >> 18);
        putContinuation(out, codePoint, 12);
        putContinuation(out, codePoint, 6);
    }
    putContinuation(out, codePoint, 0);
}

void putUnit(Bytes& out, std::uint32_t unit) {
    put(out, unit);
    put(out, unit >> 8);
}

void putUtf16(Bytes& out, std::uint32_t codePoint) {
    if (codePoint < 0x10000 && !isSurrogate(codePoint)) return putUnit(out, codePoint);
    const std::uint32_t beyond = codePoint - 0x10000;
    putUnit(out, 0xD800 + (beyond >> 10 & 0x3FF));
    putUnit(out, 0xDC00 + (beyond & 0x3FF));
}

}  // namespace

void TextEmitterUTF8::emit(Bytes& out, std::span<const std::uint32_t> in) const {
    out.clear();
    for (const std::uint32_t codePoint : in) putUtf8(out, codePoint);
}

void TextEmitterUTF16LE::emit(Bytes& out, std::span<const std::uint32_t> in) const {
    out.clear();
    for (const std::uint32_t codePoint : in) putUtf16(out, codePoint);
}

std::unique_ptr<TextEmitter> CreateTextEmitter(TextEncoding encoding) {
    switch (encoding) {
        case TextEncoding::utf8:
            return std::make_unique<TextEmitterUTF8>();
        case TextEncoding::utf16le:
            return std::make_unique<TextEmitterUTF16LE>();
    }
    return nullptr;
}

}  // namespace mvn
