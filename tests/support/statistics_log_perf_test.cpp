#include "support/log/statistics_log_perf.h"

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace mvn::log {
namespace {

class KeepingLogger final : public ILogger {
public:
    [[gnu::format(printf, 3, 4)]] void Log(std::uint32_t level, const char* format, ...) override {
        char text[300];
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(text, sizeof text, format, arguments);
        va_end(arguments);
        lines.push_back(std::to_string(level) + " " + text);
    }

    std::vector<std::string> lines;
};

class KeepingLines final : public LogSink {
public:
    KeepingLines() : LogSink(2) {}
    std::vector<std::string> lines;

private:
    void write(const LogRecord& record) override { lines.push_back(record.text); }
};

struct StatisticsLogPerfTest : testing::Test {
    std::vector<std::string> takeLines() { return std::exchange(logger.lines, {}); }
    void notify(const char* name, int times) {
        for (int i = 0; i < times; ++i) perf.NotifyBufferFull(name);
    }

    using Lines = std::vector<std::string>;

    KeepingLogger logger;
    KeepingLines csv;
    platform::SystemFigures figures{.kernelTime = 1000, .userTime = 1000};
    std::uint32_t tick = 0xFFFFFF00;  // the wrap comes soon
    StatisticsLogPerf perf{logger,
                           &csv,
                           {.warningLevel = 1, .watchdog = {5, 10, 1, 2}},
                           {.system = [this] { return figures; },
                            .tickCount = [this] { return tick; },
                            .clock =
                                [] {
                                    return LogTime{1000, 5};
                                }}};
};

TEST_F(StatisticsLogPerfTest, WarnsOfAFullBufferAtMostOnceAnInterval) {
    notify("unknown", 2);
    EXPECT_EQ(takeLines(),
              (Lines{"1 Pin output buffer full : unknown", "1 Pin output buffer full : unknown"}));
    perf.RegisterBuffer("out");
    notify("out", 3);
    EXPECT_EQ(takeLines(), Lines{"1 Pin output buffer full : out"});
    tick += 999;
    notify("out", 0);
    EXPECT_EQ(takeLines(), Lines{});
    tick += 1;
    notify("out", 1);
    EXPECT_EQ(takeLines(), Lines{"1 Pin output buffer full : out (x3)"});
}

TEST_F(StatisticsLogPerfTest, TheLineHasEveryFigureInItsColumn) {
    perf.RegisterBuffer("a");
    perf.RegisterBuffer("b");
    perf.Sample();
    EXPECT_EQ(
        csv.lines,
        Lines{"Cpu,TotalCpu,WorkingSet,PrivateBytes,NumBufferFull,NumResync,NumTsDiscontinuity,KernelTime,"
              "UserTime,Date,NumDecPictures,VirtualSize,HandleCount,NumPoliticChoices,buffer_full_a,"
              "buffer_full_b,LastDeltaNumOverAllBufferFull,NumPeriodThresholdReached,NeedRestart,"});
    perf.Sample();
    EXPECT_EQ(csv.lines.size(), 1U) << "no time has passed";
    perf.RegisterBuffer("late");  // counts, but has no column
    notify("late", 7);
    notify("b", 2);
    notify("unknown", 1);
    for (int i = 0; i < 3; ++i) perf.CountResync();
    for (int i = 0; i < 4; ++i) perf.CountTsDiscontinuity();
    for (int i = 0; i < 5; ++i) perf.CountDecodedPicture();
    perf.AddPoliticChoices(-6);
    figures = {.processKernelTime = 20,
               .processUserTime = 30,
               .idleTime = 700,
               .kernelTime = 1800,
               .userTime = 1200,
               .workingSet = 11,
               .privateBytes = 12,
               .committedBytes = 13,
               .handleCount = 14};
    perf.Sample();
    ASSERT_EQ(csv.lines.size(), 2U);
    EXPECT_EQ(csv.lines[1], "5,30,11,12,9,3,4,20,30,1000005,5,13,14,-6,0,2,0,0,0,");
}

TEST_F(StatisticsLogPerfTest, TheWatchdogAsksForARestartAfterTooManyBadPeriods) {
    perf.tick();
    perf.tick();
    notify("out", 1);
    perf.tick();
    EXPECT_EQ(perf.watchdog().periodsOverThreshold, 1U);
    perf.tick();
    EXPECT_EQ(perf.watchdog().periodsOverThreshold, 0U) << "a good period between";
    for (int i = 0; i < 2; ++i) {
        EXPECT_FALSE(perf.watchdog().needsRestart);
        notify("out", 3);
        perf.tick();
    }
    EXPECT_TRUE(perf.watchdog().needsRestart);
    EXPECT_EQ(perf.watchdog().lastDelta, 3U);
    perf.tick();
    EXPECT_TRUE(perf.watchdog().needsRestart) << "stays";
}

}  // namespace
}  // namespace mvn::log
