#include "support/string_format.h"

#include <gtest/gtest.h>

#include "platform/bounded_format.h"

namespace mvn {
namespace {

TEST(StringFormat, PutsArgumentsIntoTheText) {
    EXPECT_EQ(stringFormat("could not create directory [%s]: Win32 error %lu", "C:\\logs", 5ul),
              "could not create directory [C:\\logs]: Win32 error 5");
    EXPECT_EQ(stringFormat("%s", ""), "");
    EXPECT_EQ(stringFormat("%d%%", 100), "100%");
}

TEST(StringFormat, TakesNullForTheEmptyText) {
    const char* const none = nullptr;
    EXPECT_EQ(stringFormat(none), "");
}

TEST(StringFormat, ReturnsTextsOfAnyLengthWhole) {
    for (const std::size_t length : {255u, 256u, 257u, 300u, 511u, 512u, 513u, 1'000'000u}) {
        const std::string text = std::string(length - 1, 'x') + 'y';
        EXPECT_EQ(stringFormat("%s", text.c_str()), text) << length;
        // Each pass needs its arguments anew.
        EXPECT_EQ(stringFormat("%d%s%d", 12, text.c_str(), 34), "12" + text + "34") << length;
    }
}

TEST(StringFormat, EndsAtANulByte) {
    EXPECT_EQ(stringFormat("ab%cde", '\0'), "ab");
    EXPECT_EQ(stringFormat("%c%s", '\0', std::string(400, 'x').c_str()), "");
}

TEST(StringFormat, EndsWhereAnArgumentCannotBeConverted) {
    // No locale has been set, and that of the start knows only ASCII.
    EXPECT_EQ(stringFormat("name %ls, size %d", L"a\u20ac", 3).substr(0, 5), "name ");
}

TEST(StringFormat, CutsWhatIsTooLong) {
    const std::string text(maxFormattedLength + 1, 'x');
    EXPECT_EQ(stringFormat("%s", text.c_str()).size(), maxFormattedLength);
}

class BoundedFormat : public testing::Test {
protected:
    [[gnu::format(printf, 2, 3)]] int format(const char* text, ...) {
        va_list arguments;
        va_start(arguments, text);
        const int result = platform::boundedFormat(buffer_, 4, text, arguments);
        va_end(arguments);
        return result;
    }

    char buffer_[6] = {0, 0, 0, 0, 0, '!'};
};

TEST_F(BoundedFormat, FillsTheCapacityAndNoMore) {
    EXPECT_EQ(format("%d", 1234), 4);
    EXPECT_STREQ(buffer_, "1234");
    EXPECT_EQ(format("%d", 98765), platform::formatTruncated);
    EXPECT_STREQ(buffer_, "9876");
    EXPECT_EQ(buffer_[5], '!');
}

TEST_F(BoundedFormat, TellsFailureFromTruncation) {
    EXPECT_EQ(format("%ls", L"\u20ac"), platform::formatFailed);
    EXPECT_EQ(format("12345%ls", L"\u20ac"), platform::formatFailed);
}

}  // namespace
}  // namespace mvn
