#include "support/text.h"

#include <gtest/gtest.h>

#include "support/wide_text.h"

namespace mvn {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr TextEncoding utf8 = TextEncoding::utf8;
constexpr TextEncoding utf16 = TextEncoding::utf16le;

/// Why Text refuses the bytes; the empty text when it does not.
std::string failure(const Bytes& bytes, TextEncoding source, TextEncoding target) {
    try {
        EXPECT_EQ(Text(bytes.data(), bytes.size(), source, target).encoding(), target);
        return "";
    } catch (const MorvaneException& thrown) {
        return thrown.what();
    }
}

TEST(TextTest, RefusesWhatIsNoTextInAKnownEncoding) {
    const std::string invalid = "invalid Unicode codepoint";
    EXPECT_EQ(failure({0x41, 0x00, 0x42}, utf8, utf16), invalid);
    EXPECT_EQ(failure({0x00, 0xDC}, utf16, utf8), invalid);
    EXPECT_EQ(failure({0xED, 0xA0, 0x80}, utf8, utf8), invalid);
    EXPECT_EQ(failure({0xF4, 0x90, 0x80, 0x80}, utf8, utf16), invalid);
    EXPECT_EQ(failure({0xF4, 0x8F, 0xBF, 0xBF}, utf8, utf16), "");
    EXPECT_EQ(failure({0xE2, 0x82}, utf8, utf16), "unfinished utf-8 sequence");
    EXPECT_EQ(failure({0x41}, TextEncoding{3}, utf8), "unsupported text encoding [3]");
    EXPECT_EQ(failure({0x41}, utf8, TextEncoding{0}), "unsupported text encoding [0]");
    EXPECT_EQ(failure({0x41}, utf8, TextEncoding{0xFFFFFFFF}), "unsupported text encoding [4294967295]");
}

TEST(TextTest, EncodesAnewWhatItDecoded) {
    const Bytes overlong = {0xE0, 0x81, 0x81};
    EXPECT_EQ(Text(overlong.data(), overlong.size(), utf8, utf8).bytes(), Bytes{0x41});
    EXPECT_TRUE(Text(nullptr, 0, utf8, utf16).bytes().empty());
}

/// wchar_t takes part where it is UTF-16.
template <class Char>
void convertsWith() {
    if constexpr (WideChar<Char>) {
        const std::basic_string<Char> wide = {'C', ':', '\\', 0xE9, 0x20AC, 0xD83D, 0xDE00};
        const std::string narrow = "C:\\\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
        EXPECT_EQ(toNarrow(wide), narrow);
        EXPECT_EQ(toWide<Char>(narrow), wide);
        EXPECT_THROW(toNarrow(wide.substr(0, 6)), ExceptionTemplate<Text>);
    }
}

TEST(WideTextTest, ComesBackAsItWasOrIsRefused) {
    convertsWith<char16_t>();
    convertsWith<wchar_t>();
    EXPECT_EQ(toWide(""), u"");
    EXPECT_THROW(toWide("\xC3"), ExceptionTemplate<Text>);
    EXPECT_THROW(toWide(std::string_view("a\0b", 3)), ExceptionTemplate<Text>);
}

}  // namespace
}  // namespace mvn
