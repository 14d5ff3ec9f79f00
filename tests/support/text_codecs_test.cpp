#include <random>
#include <string>

#include <gtest/gtest.h>

#include "support/text_emitter.h"
#include "support/text_parser.h"

namespace mvn {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr TextEncoding utf8 = TextEncoding::utf8;
constexpr TextEncoding utf16 = TextEncoding::utf16le;

CodePoints decode(TextEncoding encoding, const Bytes& bytes, bool lenient) {
    CodePoints out = {1, 2, 3};  // must not be left there
    EXPECT_EQ(&CreateTextParser(encoding)->parse(out, bytes, lenient), &out);
    return out;
}

/// Why strict decoding fails; the empty text when it makes `expected` of the bytes.
std::string failureOf(TextEncoding encoding, const Bytes& bytes, const CodePoints& expected) {
    try {
        return decode(encoding, bytes, false) == expected ? "" : "other code points";
    } catch (const ExceptionTemplate<Text>& failure) {
        return failure.what();
    }
}

Bytes encode(TextEncoding encoding, const CodePoints& codePoints) {
    Bytes out = {1, 2, 3};
    CreateTextEmitter(encoding)->emit(out, codePoints);
    return out;
}

struct Decoding {
    Bytes bytes;
    std::string strictFailure;
    CodePoints lenient;
};

void expectDecodings(TextEncoding encoding, std::initializer_list<Decoding> decodings) {
    for (const Decoding& expected : decodings) {
        SCOPED_TRACE(testing::PrintToString(expected.bytes));
        EXPECT_EQ(failureOf(encoding, expected.bytes, expected.lenient), expected.strictFailure);
        EXPECT_EQ(decode(encoding, expected.bytes, true), expected.lenient);
    }
}

TEST(Utf8Parser, JudgesFormAloneAndNamesWhatBreaksIt) {
    const char* const character = "invalid utf-8 sequence, invalid character";
    const char* const unexpected = "invalid utf-8 sequence, unexpected continuation byte";
    const char* const expected = "invalid utf-8 sequence, expected a continuation byte";
    const char* const unfinished = "unfinished utf-8 sequence";
    expectDecodings(utf8, {{{0x00, 0x7F, 0xC2, 0x80, 0xDF, 0xBF}, "", {0, 0x7F, 0x80, 0x7FF}},
                           {{0xE2, 0x82, 0xAC, 0xF0, 0x9F, 0x98, 0x80}, "", {0x20AC, 0x1F600}},
                           {{0xE0, 0x81, 0x81, 0xED, 0xA0, 0x80}, "", {0x41, 0xD800}},
                           {{0xF4, 0xBF, 0xBF, 0xBF}, "", {0x13FFFF}},
                           {{0xC3, 0x28, 0x29}, expected, {0x29}},
                           {{0xE2, 0xC3, 0xA9}, expected, {}},
                           {{0x41, 0x80, 0xBF, 0x42}, unexpected, {0x41, 0x42}},
                           {{0xE2, 0x82}, unfinished, {}},
                           {{0x41, 0xF0}, unfinished, {0x41}},
                           {{0xC0, 0x41, 0xC1, 0x42, 0xF5, 0x43}, character, {0x41, 0x42, 0x43}},
                           {{0xE2, 0x82, 0xFF, 0xAC, 0x41}, character, {0x41}}});
}

TEST(Utf16Parser, NamesABrokenPairOrMakesDo) {
    const char* const second = "Excpected Second Word sequence";
    const char* const atEnd = "Excpected Second Word sequence at end of input vector";
    expectDecodings(utf16, {{{0x3D, 0xD8, 0x00, 0xDE, 0xAC, 0x20}, "", {0x1F600, 0x20AC}},
                            {{0xFF, 0xDB, 0xFF, 0xDF, 0x00, 0xE0}, "", {0x10FFFF, 0xE000}},
                            {{0x01, 0xDC}, "", {0xDC01}},
                            {{0x41, 0x00, 0x42}, "", {0x41}},
                            {{0x3D, 0xD8, 0x41, 0x07, 0x42, 0x00}, second, {0x1F741, 0x42}},
                            {{0x3D, 0xD8, 0x00, 0xE0}, second, {0x1F400}},
                            {{0x3D, 0xD8, 0x00}, atEnd, {}},
                            {{0x41, 0x00, 0x3D, 0xD8}, atEnd, {0x41}}});
}

TEST(Emitters, EncodeEveryLengthAndCheckNothing) {
    EXPECT_EQ(
        encode(utf8, {0x7F, 0x80, 0x7FF, 0x800, 0xFFFF, 0x10000}),
        (Bytes{0x7F, 0xC2, 0x80, 0xDF, 0xBF, 0xE0, 0xA0, 0x80, 0xEF, 0xBF, 0xBF, 0xF0, 0x90, 0x80, 0x80}));
    EXPECT_EQ(encode(utf8, {0xD800, 0xFFFFFFFF}), (Bytes{0xED, 0xA0, 0x80, 0xFF, 0xBF, 0xBF, 0xBF}));
    EXPECT_EQ(encode(utf16, {0x41, 0xFFFF, 0x10000, 0x1F600}),
              (Bytes{0x41, 0x00, 0xFF, 0xFF, 0x00, 0xD8, 0x00, 0xDC, 0x3D, 0xD8, 0x00, 0xDE}));
    EXPECT_EQ(encode(utf16, {0xD800, 0xDFFF, 0x110000}),
              (Bytes{0xF6, 0xDB, 0x00, 0xDC, 0xF7, 0xDB, 0xFF, 0xDF, 0x00, 0xD8, 0x00, 0xDC}));
}

class AnyText : public testing::Test {
protected:
    std::uint32_t upTo(std::uint32_t last) {
        return std::uniform_int_distribution<std::uint32_t>(0, last)(random_);
    }

    std::mt19937 random_{20};
};

TEST_F(AnyText, ComesBackAsItWas) {
    for (int run = 0; run < 500; ++run) {
        CodePoints codePoints(upTo(100));
        for (std::uint32_t& codePoint : codePoints) {
            codePoint = upTo(0x10FFFFu >> upTo(20));  // as many of one byte as of four
            if (isSurrogate(codePoint)) codePoint = 0xFFFD;
        }
        for (const TextEncoding encoding : {utf8, utf16})
            ASSERT_EQ(failureOf(encoding, encode(encoding, codePoints), codePoints), "");
    }
}

TEST_F(AnyText, IsDecodedLenientlyOrAsStrictly) {
    const Bytes branching = {0x41, 0x80, 0xBF, 0xC3, 0xD8, 0xDC, 0xE2, 0xF0, 0xF4, 0xF5};
    for (const TextEncoding encoding : {utf8, utf16}) {
        int rejected = 0;
        for (int run = 0; run < 5000; ++run) {
            Bytes bytes(upTo(12));
            for (std::uint8_t& byte : bytes)
                byte = upTo(3) == 0 ? static_cast<std::uint8_t>(upTo(255)) : branching[upTo(9)];
            const std::string failure = failureOf(encoding, bytes, decode(encoding, bytes, true));
            ASSERT_NE(failure, "other code points");
            if (!failure.empty()) ++rejected;
        }
        // Both ways have been gone.
        EXPECT_GT(rejected, 500);
        EXPECT_LT(rejected, 4800);
    }
}

}  // namespace
}  // namespace mvn
