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

CodePoints decode(TextEncoding encoding, const Bytes& bytes, bool lenient = false) {
    CodePoints out = {1, 2, 3};  // must not be left there
    EXPECT_EQ(&CreateTextParser(encoding)->parse(out, bytes, lenient), &out);
    return out;
}

CodePoints decodeLeniently(TextEncoding encoding, const Bytes& bytes) {
    return decode(encoding, bytes, true);
}

std::string strictFailure(TextEncoding encoding, const Bytes& bytes) {
    try {
        decode(encoding, bytes);
        return "none";
    } catch (const ExceptionTemplate<Text>& failure) {
        return failure.what();
    }
}

Bytes encode(TextEncoding encoding, const CodePoints& codePoints) {
    Bytes out = {1, 2, 3};
    CreateTextEmitter(encoding)->emit(out, codePoints);
    return out;
}

TEST(Utf8Parser, DecodesSequencesOfEveryLength) {
    EXPECT_EQ(
        decode(utf8, {0x00, 0x41, 0x7F, 0xC2, 0x80, 0xDF, 0xBF, 0xE2, 0x82, 0xAC, 0xF0, 0x9F, 0x98, 0x80}),
        (CodePoints{0, 0x41, 0x7F, 0x80, 0x7FF, 0x20AC, 0x1F600}));
}

TEST(Utf8Parser, JudgesFormAlone) {
    EXPECT_EQ(decode(utf8, {0xE0, 0x81, 0x81, 0xED, 0xA0, 0x80, 0xF4, 0xBF, 0xBF, 0xBF}),
              (CodePoints{0x41, 0xD800, 0x13FFFF}));
}

TEST(Utf8Parser, NamesWhatIsMalformedOrSkipsIt) {
    struct Case {
        Bytes bytes;
        const char* message;
        CodePoints lenient;
    };
    const char* const character = "invalid utf-8 sequence, invalid character";
    const char* const unexpected = "invalid utf-8 sequence, unexpected continuation byte";
    const char* const expected = "invalid utf-8 sequence, expected a continuation byte";
    const char* const unfinished = "unfinished utf-8 sequence";
    for (const Case& c :
         {Case{{0xC3, 0x28}, expected, {}}, Case{{0xC3, 0x28, 0x29}, expected, {0x29}},
          Case{{0xE2, 0xC3, 0xA9}, expected, {}}, Case{{0x80}, unexpected, {}},
          Case{{0x41, 0xBF, 0x42}, unexpected, {0x41, 0x42}}, Case{{0xE2, 0x82}, unfinished, {}},
          Case{{0x41, 0xF0}, unfinished, {0x41}}, Case{{0xC0, 0x80}, character, {}},
          Case{{0xC1, 0x41}, character, {0x41}}, Case{{0xF5, 0x41}, character, {0x41}},
          Case{{0xE2, 0x82, 0xFF, 0xAC, 0x41}, character, {0x41}}}) {
        SCOPED_TRACE(testing::PrintToString(c.bytes));
        EXPECT_EQ(strictFailure(utf8, c.bytes), c.message);
        EXPECT_EQ(decodeLeniently(utf8, c.bytes), c.lenient);
    }
}

TEST(Utf16Parser, DecodesUnitsAndPairs) {
    EXPECT_EQ(decode(utf16, {0x3D, 0xD8, 0x00, 0xDE, 0xAC, 0x20}), (CodePoints{0x1F600, 0x20AC}));
    EXPECT_EQ(decode(utf16, {0xFF, 0xDB, 0xFF, 0xDF, 0x00, 0xE0}), (CodePoints{0x10FFFF, 0xE000}));
    EXPECT_EQ(decode(utf16, {0x01, 0xDC}), CodePoints{0xDC01});
    EXPECT_EQ(decode(utf16, {0x41, 0x00, 0x42}), CodePoints{0x41});
}

TEST(Utf16Parser, NamesABrokenPairOrMakesDo) {
    EXPECT_EQ(strictFailure(utf16, {0x3D, 0xD8, 0x41, 0x00}), "Excpected Second Word sequence");
    EXPECT_EQ(strictFailure(utf16, {0x3D, 0xD8, 0x00, 0xE0}), "Excpected Second Word sequence");
    EXPECT_EQ(decodeLeniently(utf16, {0x3D, 0xD8, 0x41, 0x07, 0x42, 0x00}), (CodePoints{0x1F741, 0x42}));

    const char* const atEnd = "Excpected Second Word sequence at end of input vector";
    EXPECT_EQ(strictFailure(utf16, {0x3D, 0xD8}), atEnd);
    EXPECT_EQ(strictFailure(utf16, {0x3D, 0xD8, 0x00}), atEnd);
    EXPECT_EQ(decodeLeniently(utf16, {0x41, 0x00, 0x3D, 0xD8}), CodePoints{0x41});
}

TEST(Emitters, EncodeEveryLength) {
    EXPECT_EQ(encode(utf8, {0x7F, 0x80, 0x7FF, 0x800, 0x20AC}),
              (Bytes{0x7F, 0xC2, 0x80, 0xDF, 0xBF, 0xE0, 0xA0, 0x80, 0xE2, 0x82, 0xAC}));
    EXPECT_EQ(encode(utf8, {0xFFFF, 0x10000, 0x1F600}),
              (Bytes{0xEF, 0xBF, 0xBF, 0xF0, 0x90, 0x80, 0x80, 0xF0, 0x9F, 0x98, 0x80}));
    EXPECT_EQ(encode(utf16, {0x41, 0xFFFF, 0x10000, 0x1F600}),
              (Bytes{0x41, 0x00, 0xFF, 0xFF, 0x00, 0xD8, 0x00, 0xDC, 0x3D, 0xD8, 0x00, 0xDE}));
}

TEST(Emitters, CheckNothing) {
    EXPECT_EQ(encode(utf8, {0xD800, 0xFFFFFFFF}), (Bytes{0xED, 0xA0, 0x80, 0xFF, 0xBF, 0xBF, 0xBF}));
    EXPECT_EQ(encode(utf16, {0xD800, 0xDFFF}), (Bytes{0xF6, 0xDB, 0x00, 0xDC, 0xF7, 0xDB, 0xFF, 0xDF}));
    EXPECT_EQ(encode(utf16, {0x110000}), (Bytes{0x00, 0xD8, 0x00, 0xDC}));
}

TEST(Factories, KnowTwoEncodings) {
    for (const std::uint32_t other : {0u, 3u, 0xFFFFFFFFu}) {
        EXPECT_EQ(CreateTextParser(TextEncoding{other}), nullptr);
        EXPECT_EQ(CreateTextEmitter(TextEncoding{other}), nullptr);
    }
}

class AnyText : public testing::TestWithParam<TextEncoding> {
protected:
    std::uint32_t upTo(std::uint32_t last) {
        return std::uniform_int_distribution<std::uint32_t>(0, last)(random_);
    }

    /// As many code points of one byte as of four, none of them a surrogate.
    std::uint32_t anyCodePoint() {
        const std::uint32_t codePoint = upTo(0x10FFFFu >> upTo(20));
        return isSurrogate(codePoint) ? 0xFFFD : codePoint;
    }

    /// Mostly bytes on which decoders branch.
    std::uint8_t anyByte() {
        const Bytes leads = {0x41, 0x80, 0xBF, 0xC3, 0xD8, 0xDC, 0xE2, 0xF0, 0xF4, 0xF5};
        return static_cast<std::uint8_t>(upTo(3) == 0 ? upTo(255) : leads[upTo(9)]);
    }

private:
    std::mt19937 random_{20};
};

TEST_P(AnyText, ComesBackAsItWas) {
    for (int run = 0; run < 500; ++run) {
        CodePoints codePoints(upTo(100));
        for (std::uint32_t& codePoint : codePoints) codePoint = anyCodePoint();
        const Bytes bytes = encode(GetParam(), codePoints);
        ASSERT_EQ(decode(GetParam(), bytes), codePoints);
        ASSERT_EQ(decodeLeniently(GetParam(), bytes), codePoints);
    }
}

TEST_P(AnyText, IsDecodedLenientlyOrAsStrictly) {
    int rejected = 0;
    for (int run = 0; run < 5000; ++run) {
        Bytes bytes(upTo(12));
        for (std::uint8_t& byte : bytes) byte = anyByte();
        CodePoints lenient;
        ASSERT_NO_THROW(lenient = decodeLeniently(GetParam(), bytes));
        if (strictFailure(GetParam(), bytes) == "none")
            ASSERT_EQ(decode(GetParam(), bytes), lenient);
        else
            ++rejected;
    }
    // Both ways have been gone.
    EXPECT_GT(rejected, 500);
    EXPECT_LT(rejected, 4800);
}

INSTANTIATE_TEST_SUITE_P(Encodings, AnyText, testing::Values(utf8, utf16),
                         [](const auto& tested) { return tested.param == utf8 ? "Utf8" : "Utf16le"; });

}  // namespace
}  // namespace mvn
