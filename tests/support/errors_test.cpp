#include <new>

#include <gtest/gtest.h>

#include "platform/component/error_text.h"
#include "support/com_exception.h"
#include "support/error_table.h"

namespace mvn {
namespace {

HRESULT code(std::uint32_t bits) {
    return static_cast<HRESULT>(bits);
}

std::string describe(std::uint32_t bits) {
    return COMException(code(bits)).what();
}

/// Composed before main(), in no particular order with the library's own static objects.
const std::string describedEarly = describe(0x8025008C);

TEST(COMException, NamesTheSystemsOwnCodes) {
    EXPECT_EQ(describe(0x80250001), "Morvane Error 80250001: Internal error");
    EXPECT_EQ(describe(0x8025002A), "Morvane Error 8025002a: Slate ftp file server unreachable");
    EXPECT_EQ(describedEarly,
              "Morvane Error 8025008c: Some stream names used for RTMP connection are the same");
}

/// What the framework says of a code that is nobody's; some say nothing.
std::string frameworkText(std::uint32_t bits) {
    platform::ErrorTextBuffer buffer{};
    return platform::frameworkErrorText(code(bits), buffer) > 0 ? buffer.data() : "Invalid error code";
}

TEST(COMException, LeavesUnknownCodesToTheFramework) {
    EXPECT_EQ(describe(0x80250011), "COM Error 80250011: " + frameworkText(0x80250011));
    EXPECT_EQ(describe(0x0025), "COM Error 25: " + frameworkText(0x0025));
}

TEST(COMException, TakesOtherTextsFromTheFramework) {
    const std::string failure = describe(0x80004005);
    EXPECT_TRUE(failure.starts_with("COM Error 80004005: ")) << failure;
    EXPECT_FALSE(failure.ends_with("Invalid error code")) << failure;
    EXPECT_NE(failure.substr(20), describe(0x8007000E).substr(20));
}

class Undescribable : public COMException {
public:
    using COMException::COMException;
    void FormatDescription() const override { throw std::bad_alloc(); }
};

TEST(COMException, SaysTheSameEachTimeAndSomethingWithoutMemory) {
    const COMException failure(code(0x80250034));
    const std::string first = failure.what();
    EXPECT_EQ(failure.what(), first);
    EXPECT_EQ(failure.result(), code(0x80250034));
    EXPECT_STRNE(Undescribable(E_OUTOFMEMORY).what(), "");
}

TEST(ErrorTable, FindsItsRowsAndNothingElse) {
    std::size_t found = 0;
    for (std::uint32_t bits = 0x8024FF00; bits < 0x80260100; ++bits)
        if (ErrorTable::find(code(bits)) != nullptr) ++found;
    EXPECT_EQ(found, 48u);
    EXPECT_EQ(ErrorTable::rows().size(), 48u);
    for (const ErrorTable::Row& row : ErrorTable::rows()) EXPECT_EQ(ErrorTable::find(row.code), row.message);
    for (const std::uint32_t other : {0u, 0x00250001u, 0x7FFFFFFFu, 0xFFFFFFFFu})
        EXPECT_EQ(ErrorTable::find(code(other)), nullptr) << std::hex << other;
}

}  // namespace
}  // namespace mvn
