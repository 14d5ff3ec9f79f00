#include "framework/base/atl_exception.h"
#include "tests/filters/fault_injection.h"
#include "tests/rtp_media/send/scheduler_fixture.h"

namespace mvrtpfec::test {
namespace {

TEST(RTPScheduler, IsNotMadeWithoutItsWorker) {
    HandClock clock;
    HRESULT result = S_OK;
    try {
        const FaultInjection fault(Resource::thread, 0);
        RTPScheduler scheduler(&clock, SchedulerTest::settings());
    } catch (const CAtlException& error) {
        result = error;
    }
    EXPECT_EQ(result, HRESULT_FROM_WIN32(FaultInjection::error));
}

}  // namespace
}  // namespace mvrtpfec::test
