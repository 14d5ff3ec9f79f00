#include "support/string_format.h"

#include <gtest/gtest.h>

#include "platform/text/bounded_format.h"

namespace mvn {
namespace {

TEST(StringFormat, ReturnsTextsOfAnyLengthWhole) {
    EXPECT_EQ(stringFormat("%s", ""), "");
    for (const std::size_t length : {255u, 256u, 257u, 511u, 512u, 513u, 1'000'000u}) {
        const std::string text = std::string(length - 1, 'x') + 'y';
        EXPECT_EQ(stringFormat("%s", text.c_str()), text) << length;
        // Each pass needs its arguments anew.
        EXPECT_EQ(stringFormat("%d%s%d%%", 12, text.c_str(), 34), "12" + text + "34%") << length;
    }
    const std::string tooLong(maxFormattedLength + 1, 'x');
    EXPECT_EQ(stringFormat("%s", tooLong.c_str()).size(), maxFormattedLength);
}

TEST(StringFormat, EndsWhereItCannotGoOn) {
    const char* const none = nullptr;
    EXPECT_EQ(stringFormat(none), "");
    EXPECT_EQ(stringFormat("ab%cde", '\0'), "ab");
    EXPECT_EQ(stringFormat("%c%s", '\0', std::string(400, 'x').c_str()), "");
    // No locale has been set, and that of the start knows only ASCII.
    EXPECT_EQ(stringFormat("name %ls, size %d", L"a\u20ac", 3).substr(0, 5), "name ");
}

[[gnu::format(printf, 2, 3)]] int formatIntoFour(char* buffer, const char* text, ...) {
    va_list arguments;
    va_start(arguments, text);
    const int result = platform::boundedFormat(buffer, 4, text, arguments);
    va_end(arguments);
    return result;
}

TEST(BoundedFormat, FillsTheCapacityAndTellsFailureFromTruncation) {
    char buffer[6] = {0, 0, 0, 0, 0, '!'};
    EXPECT_EQ(formatIntoFour(buffer, "%d", 1234), 4);
    EXPECT_STREQ(buffer, "1234");
    EXPECT_EQ(formatIntoFour(buffer, "%d", 98765), platform::formatTruncated);
    EXPECT_STREQ(buffer, "9876");
    EXPECT_EQ(buffer[5], '!');
    EXPECT_EQ(formatIntoFour(buffer, "%ls", L"\u20ac"), platform::formatFailed);
    EXPECT_EQ(formatIntoFour(buffer, "12345%ls", L"\u20ac"), platform::formatFailed);
}

}  // namespace
}  // namespace mvn
