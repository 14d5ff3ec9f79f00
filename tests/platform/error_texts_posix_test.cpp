// Each failure that has a name has a text of ours, where the system has none to lend.

#include <fstream>
#include <regex>
#include <string>

#include <gtest/gtest.h>

#include "platform/component/error_text.h"

namespace platform {
namespace {

TEST(ErrorTexts, StandForEveryFailureThatHasAName) {
    const std::regex failure("constexpr HRESULT (\\w*E_\\w+) = makeHresult\\((0x\\w+)\\);");
    std::ifstream header(MVRTPFEC_SOURCES "/platform/hresult.h");
    int failures = 0;
    std::smatch found;
    for (std::string line; std::getline(header, line);) {
        if (!std::regex_match(line, found, failure)) continue;
        ErrorTextBuffer buffer{};
        ++failures;
        const auto bits = static_cast<std::uint32_t>(std::stoul(found[2], nullptr, 16));
        EXPECT_GT(frameworkErrorText(makeHresult(bits), buffer), 0U) << line;
    }
    EXPECT_GE(failures, 38);
}

}  // namespace
}  // namespace platform
