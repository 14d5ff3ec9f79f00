// Any bytes as text of either encoding, and as an argument of the formatter.

#include <algorithm>
#include <cstdlib>
#include <string>

#include "support/string_format.h"
#include "support/text.h"
#include "support/text_emitter.h"
#include "support/text_parser.h"

namespace {

using namespace mvn;
using Bytes = std::span<const std::uint8_t>;

void require(bool condition) {
    if (!condition) std::abort();
}

bool isScalar(std::uint32_t codePoint) {
    return codePoint <= 0x10FFFF && !isSurrogate(codePoint);
}

std::vector<std::uint8_t> encode(TextEncoding encoding, const CodePoints& codePoints) {
    std::vector<std::uint8_t> bytes;
    CreateTextEmitter(encoding)->emit(bytes, codePoints);
    return bytes;
}

/// Overlong sequences come back shorter, everything else in UTF-8 as the very bytes it was.
void checkUtf8(Bytes bytes, const CodePoints& decoded) {
    const auto again = encode(TextEncoding::utf8, decoded);
    require(again.size() <= bytes.size());
    require(again.size() < bytes.size() || std::equal(again.begin(), again.end(), bytes.begin()));
    CodePoints decodedAgain;
    require(TextParserUTF8().parse(decodedAgain, again, false) == decoded);
}

/// UTF-16 without lone surrogates has one form only; an odd last byte is no part of it.
void checkUtf16(Bytes bytes, const CodePoints& decoded) {
    if (!std::all_of(decoded.begin(), decoded.end(), isScalar)) return;
    const auto again = encode(TextEncoding::utf16le, decoded);
    require(again.size() == bytes.size() - bytes.size() % 2);
    require(std::equal(again.begin(), again.end(), bytes.begin()));
}

void checkParser(TextEncoding encoding, Bytes bytes) {
    const auto parser = CreateTextParser(encoding);
    CodePoints lenient;
    CodePoints strict;
    parser->parse(lenient, bytes, true);
    require(lenient.size() <= bytes.size());
    try {
        parser->parse(strict, bytes, false);
    } catch (const ExceptionTemplate<Text>&) {
        // What strict decoding found before the fault, lenient decoding found as well.
        require(strict.size() <= lenient.size() && std::equal(strict.begin(), strict.end(), lenient.begin()));
        return;
    }
    require(strict == lenient);
    encoding == TextEncoding::utf8 ? checkUtf8(bytes, strict) : checkUtf16(bytes, strict);
}

/// A conversion that is accepted at all can be taken back and repeated with the same outcome.
void checkText(Bytes bytes, TextEncoding source, TextEncoding target) {
    std::vector<std::uint8_t> there;
    try {
        there = Text(bytes.data(), bytes.size(), source, target).bytes();
    } catch (const ExceptionTemplate<Text>&) {
        return;
    }
    const Text back(there.data(), there.size(), target, source);
    require(Text(back.bytes().data(), back.bytes().size(), source, target).bytes() == there);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes bytes(data, size);
    checkParser(TextEncoding::utf8, bytes);
    checkParser(TextEncoding::utf16le, bytes);
    checkText(bytes, TextEncoding::utf8, TextEncoding::utf16le);
    checkText(bytes, TextEncoding::utf16le, TextEncoding::utf8);
    const std::string text(bytes.begin(), bytes.end());
    require(stringFormat("[%s]", text.c_str()) == "[" + std::string(text.c_str()) + "]");
    return 0;
}
