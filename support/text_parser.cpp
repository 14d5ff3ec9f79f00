#include "support/text_parser.h"

#include <optional>

namespace mvn {
namespace {

/// Tells of malformed input, unless it is to be skipped.
void reject(bool lenient, const char* message) {
    if (!lenient) throw TextException(message);
}

class Utf8Decoder {
public:
    Utf8Decoder(CodePoints& out, bool lenient) : out_(out), lenient_(lenient) {}

    void take(std::uint8_t byte) {
        if (byte == 0xC0 || byte == 0xC1 || byte >= 0xF5)
            abandon("invalid utf-8 sequence, invalid character");
        else if (missing_ == 0)
            begin(byte);
        else
            proceed(byte);
    }

    void finish() const {
        if (missing_ > 0) reject(lenient_, "unfinished utf-8 sequence");
    }

private:
    void begin(std::uint8_t byte) {
        if (byte < 0x80)
            out_.push_back(byte);
        else if ((byte & 0xE0) == 0xC0)
            expect(1, byte & 0x1F);
        else if ((byte & 0xF0) == 0xE0)
            expect(2, byte & 0x0F);
        else if ((byte & 0xF8) == 0xF0)
            expect(3, byte & 0x07);
        else
            abandon("invalid utf-8 sequence, unexpected continuation byte");
    }

    void proceed(std::uint8_t byte) {
        if ((byte & 0xC0) != 0x80) return abandon("invalid utf-8 sequence, expected a continuation byte");
        value_ = value_ << 6 | (byte & 0x3F);
        if (--missing_ == 0) out_.push_back(value_);
    }

    void expect(int bytes, int bits) {
        missing_ = bytes;
        value_ = static_cast<std::uint32_t>(bits);
    }

    void abandon(const char* message) {
        reject(lenient_, message);
        missing_ = 0;
    }

    CodePoints& out_;
    const bool lenient_;
    std::uint32_t value_ = 0;
    int missing_ = 0;  ///< continuation bytes still to come; 0 outside a sequence
};

}  // namespace

CodePoints& TextParserUTF8::parse(CodePoints& out, std::span<const std::uint8_t> in, bool lenient) const {
    out.clear();
    Utf8Decoder decoder(out, lenient);
    for (const std::uint8_t byte : in) decoder.take(byte);
    decoder.finish();
    return out;
}

CodePoints& TextParserUTF16LE::parse(CodePoints& out, std::span<const std::uint8_t> in, bool lenient) const {
    out.clear();
    std::optional<std::uint32_t> pending;
    for (std::size_t i = 0; i + 1 < in.size(); i += 2) {
        const std::uint32_t low = in[i];
        const std::uint32_t high = in[i + 1];
        if (pending) {
            if (high < 0xDC || high > 0xDF) reject(lenient, "Excpected Second Word sequence");
            out.push_back(*pending + low + (high & 3) * 0x100);
            pending.reset();
        } else if (high >= 0xD8 && high <= 0xDB) {
            pending = (high & 3) * 0x40000 + low * 0x400 + 0x10000;
        } else {
            out.push_back(low + high * 0x100);
        }
    }
    if (pending) reject(lenient, "Excpected Second Word sequence at end of input vector");
    return out;
}

std::unique_ptr<TextParser> CreateTextParser(TextEncoding encoding) {
    switch (encoding) {
        case TextEncoding::utf8:
            return std::make_unique<TextParserUTF8>();
        case TextEncoding::utf16le:
            return std::make_unique<TextParserUTF16LE>();
    }
    return nullptr;
}

}  // namespace mvn
