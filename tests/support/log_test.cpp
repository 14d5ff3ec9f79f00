#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/log/dummy_log_perf.h"
#include "support/log/log_message.h"
#include "support/log/smart_log_perf.h"

namespace mvn::log {
namespace {

/// Writes down what it is called for.
class Journal : public ILogPerf {
public:
    [[gnu::format(printf, 3, 4)]] void Log(std::uint32_t level, const char* format, ...) override {
        MessageBuffer message;
        va_list arguments;
        va_start(arguments, format);
        formatMessage(message, format, arguments);
        va_end(arguments);
        lines.push_back(std::to_string(level) + " " + format + " " + message.data());
    }
    void CountResync() override { lines.emplace_back("resync"); }
    void CountTsDiscontinuity() override { lines.emplace_back("discontinuity"); }
    void CountDecodedPicture() override { lines.emplace_back("picture"); }
    void AddPoliticChoices(std::int32_t amount) override {
        lines.push_back("choices " + std::to_string(amount));
    }
    void Sample() override { lines.emplace_back("sample"); }
    void RegisterBuffer(const char* name) override { lines.push_back(std::string("register ") + name); }
    void NotifyBufferFull(const char* name) override { lines.push_back(std::string("full ") + name); }

    std::vector<std::string> lines;
};

using Lines = std::vector<std::string>;

TEST(SmartLogPerf, HandsEveryCallOn) {
    Journal journal;
    SmartLogPerf<DummyLogPerf> logger;
    logger.SetTarget(&journal);
    logger.Log(2, "%d%%", 5);
    logger.CountResync();
    logger.CountTsDiscontinuity();
    logger.CountDecodedPicture();
    logger.AddPoliticChoices(-3);
    logger.Sample();
    IBufferFullNotifier& notifier = logger;
    notifier.RegisterBuffer("rtp_fec_in");
    notifier.NotifyBufferFull("rtp_fec_in");
    EXPECT_EQ(journal.lines, (Lines{"2 %s 5%", "resync", "discontinuity", "picture", "choices -3", "sample",
                                    "register rtp_fec_in", "full rtp_fec_in"}));
    logger.SetTarget(nullptr);
    logger.CountResync();
    EXPECT_EQ(journal.lines.size(), 8u);
}

TEST(SmartLogPerf, CutsLongMessages) {
    Journal journal;
    SmartLogPerf<DummyLogPerf> logger;
    logger.SetTarget(&journal);
    const std::string fits(259, 'x');
    logger.Log(0, "%s", fits.c_str());
    logger.Log(0, "%s%s", fits.c_str(), "more");
    EXPECT_EQ(journal.lines, Lines(2, "0 %s " + fits));
}

}  // namespace
}  // namespace mvn::log
