#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "mvrtpfec/log_perf.h"
#include "platform/process/system_figures.h"
#include "support/log/cpu_load.h"
#include "support/log/log_sink.h"
#include "support/log/restart_watchdog.h"

namespace mvn::log {

/// What is injected in tests.
struct StatisticsSources {
    std::function<platform::SystemFigures()> system = platform::readSystemFigures;
    std::function<std::uint32_t()> tickCount;  ///< ms, may wrap; empty for the system's
    LogClock clock = logTimeNow;
};

struct StatisticsSettings {
    std::uint32_t warningLevel = 1;        ///< of buffers found full
    std::uint32_t warningInterval = 1000;  ///< least time between two of one buffer, ms
    RestartWatchdog::Settings watchdog;
};

/// Counts what happens to the media, warns of full buffers no more often than it should, and writes it all as
/// comma-separated lines. Any thread.
class StatisticsLogPerf final : public ILogPerf {
public:
    /// Neither is owned; null for no sink.
    StatisticsLogPerf(ILogger& logger, LogSink* statistics, const StatisticsSettings& settings = {},
                      StatisticsSources sources = {});

    /// Handed on to the logger, cut to 259 characters.
    [[gnu::format(printf, 3, 4)]] void Log(std::uint32_t level, const char* format, ...) override;

    void CountResync() override;
    void CountTsDiscontinuity() override;
    void CountDecodedPicture() override;
    void AddPoliticChoices(std::int32_t amount) override;
    void Sample() override { writeLine(); }
    /// The same: whether there was one to write, which there isn't when the system's times haven't moved
    /// since the last. The first is the header, and has a column for each buffer registered by then; one that
    /// comes later counts in the sum alone.
    bool writeLine();

    void RegisterBuffer(const char* name) override;
    void NotifyBufferFull(const char* name) override;

    /// One step of the restart watchdog.
    void tick() { watchdog_.tick(); }
    RestartWatchdog::State watchdog() const { return watchdog_.state(); }

private:
    struct Buffer {
        std::string name;
        std::uint32_t lastWarning;  ///< tick count
        std::uint32_t sinceWarning = 0;
        std::uint32_t total = 0;
    };
    struct Counters {
        std::uint32_t resyncs = 0;
        std::uint32_t discontinuities = 0;
        std::uint32_t pictures = 0;
        std::int32_t politicChoices = 0;
    };

    std::uint32_t now() const;
    Buffer* find(const std::string& name);
    std::uint32_t countBufferFull(const std::string& name);
    std::string header();
    std::string values(const platform::SystemFigures& figures, const CpuLoad::Percent& cpu,
                       const LogTime& time);

    ILogger& logger_;
    LogSink* const statistics_;
    const StatisticsSettings settings_;
    const StatisticsSources sources_;
    RestartWatchdog watchdog_;

    std::mutex mutex_;  ///< counters and buffers
    Counters counters_;
    std::vector<Buffer> buffers_;  ///< in the order of their registration
    std::size_t columns_ = 0;      ///< how many of them the header names

    std::mutex sampling_;  ///< the rest, and the order of the lines
    CpuLoad cpu_;
    bool headerWritten_ = false;
};

}  // namespace mvn::log
