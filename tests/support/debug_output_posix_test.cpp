#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/process/debug_output.h"
#include "support/log/dummy_log_perf.h"
#include "support/log/smart_log_perf.h"

namespace {

std::vector<std::string> heard;

}  // namespace

/// Stands in for the platform's own.
extern "C" void OutputDebugStringA(const char* text) {
    heard.emplace_back(text);
}

namespace mvn::log {
namespace {

TEST(DummyLogPerf, SendsMessageAndLineFeedAndNothingElse) {
    heard.clear();
    SmartLogPerf<DummyLogPerf> logger;
    logger.NotifyBufferFull("rtp_fec_in");
    logger.Sample();
    logger.Log(2, "%d%%", 5);
    logger.Log(0, "%s", std::string(300, 'x').c_str());
    EXPECT_EQ(heard, (std::vector<std::string>{"5%", "\n", std::string(259, 'x'), "\n"}));
}

}  // namespace
}  // namespace mvn::log
