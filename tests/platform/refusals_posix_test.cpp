// What our own objects refuse, as Windows' do, where stand-ins for Windows don't.

#include <array>

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace platform
