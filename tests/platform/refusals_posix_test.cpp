// What our own objects refuse, as Windows' do, where stand-ins for Windows don't, and how failures are told.

#include <array>
#include <fstream>
#include <regex>
#include <string>

#include <gtest/gtest.h>

#include "platform/component/error_text.h"
#include "tests/platform/owned_handle.h"

namespace platform {
namespace {

TEST(NativeRefusals, ConcernAnObjectTwiceInAWaitForAll) {
    const AutoEvent event(true);
    const std::array<HANDLE, 2> twice{event, event};
    EXPECT_EQ(WaitForMultipleObjects(2, twice.data(), TRUE, 0), DWORD{WAIT_FAILED});
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_TRUE(isTaken(event)) << "a refused wait took it";
}

TEST(NativeRefusals, ConcernAReleaseOfNoUnits) {
    const Semaphore units(1, 3);
    EXPECT_FALSE(ReleaseSemaphore(units, 0, nullptr));
}

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
