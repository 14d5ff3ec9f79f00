#include "support/text.h"

#include <gtest/gtest.h>

#include "support/wide_text.h"

namespace mvn {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr TextEncoding utf8 = TextEncoding::utf8;
constexpr TextEncoding utf16 = TextEncoding::utf16le;

Bytes convert(const Bytes& bytes, TextEncoding source, TextEncoding target) {
    const Text text(bytes.data(), bytes.size(), source, target);
    EXPECT_EQ(text.encoding(), target);
    return text.bytes();
}

std::string failure(const Bytes& bytes, TextEncoding source, TextEncoding target) {
    try {
        convert(bytes, source, target);
        return "none";
    } catch (const ExceptionTemplate<Text>& thrown) {
        return thrown.what();
    }
}

TEST(TextTest, ConvertsBetweenEncodings) {
    const Bytes narrow = {0x41, 0xC3, 0xA9, 0xE2, 0x82, 0xAC, 0xF0, 0x9F, 0x98, 0x80};
    const Bytes wide = {0x41, 0x00, 0xE9, 0x00, 0xAC, 0x20, 0x3D, 0xD8, 0x00, 0xDE};
    EXPECT_EQ(convert(narrow, utf8, utf16), wide);
    EXPECT_EQ(convert(wide, utf16, utf8), narrow);
    EXPECT_EQ(convert({0xE0, 0x81, 0x81}, utf8, utf8), Bytes{0x41});
    EXPECT_TRUE(Text(nullptr, 0, utf8, utf16).bytes().empty());
}

TEST(TextTest, RefusesWhatIsNoCodePointOfText) {
    const std::string invalid = "invalid Unicode codepoint";
    EXPECT_EQ(failure({0x41, 0x00, 0x42}, utf8, utf16), invalid);
    EXPECT_EQ(failure({0x00, 0xDC}, utf16, utf8), invalid);
    EXPECT_EQ(failure({0xED, 0xA0, 0x80}, utf8, utf8), invalid);
    EXPECT_EQ(failure({0xF4, 0x90, 0x80, 0x80}, utf8, utf16), invalid);
    EXPECT_EQ(failure({0xF4, 0x8F, 0xBF, 0xBF}, utf8, utf16), "none");
}

TEST(TextTest, DecodesStrictly) {
    EXPECT_EQ(failure({0xE2, 0x82}, utf8, utf16), "unfinished utf-8 sequence");
    EXPECT_EQ(failure({0x41, 0x00, 0x3D, 0xD8}, utf16, utf8),
              "Excpected Second Word sequence at end of input vector");
}

TEST(TextTest, RefusesOtherEncodings) {
    EXPECT_EQ(failure({0x41}, TextEncoding{3}, utf8), "unsupported text encoding [3]");
    EXPECT_EQ(failure({0x41}, utf8, TextEncoding{0}), "unsupported text encoding [0]");
}

TEST(WideTextTest, ComesBackAsItWas) {
    const std::u16string wide = u"C:\\m\u00e9dia\\\u20ac\U0001F600";
    const std::string narrow =
        "C:\\m\xC3\xA9"
        "dia\\\xE2\x82\xAC\xF0\x9F\x98\x80";
    EXPECT_EQ(toNarrow(wide), narrow);
    EXPECT_EQ(toWide(narrow), wide);
    EXPECT_EQ(toWide(""), u"");
}

TEST(WideTextTest, RefusesBrokenText) {
    EXPECT_THROW(toWide("\xC3"), ExceptionTemplate<Text>);
    EXPECT_THROW(toNarrow(std::u16string(1, char16_t{0xD83D})), ExceptionTemplate<Text>);
    EXPECT_THROW(toWide(std::string_view("a\0b", 3)), ExceptionTemplate<Text>);
}

/// wchar_t takes part where it is UTF-16.
template <class Char>
void convertsWith() {
    if constexpr (WideChar<Char>) {
        EXPECT_EQ(toNarrow(toWide<Char>("\xC3\xA9")), "\xC3\xA9");
    }
}

TEST(WideTextTest, TakesTheSystemsWideStrings) {
    convertsWith<char16_t>();
    convertsWith<wchar_t>();
}

}  // namespace
}  // namespace mvn
