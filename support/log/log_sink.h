#pragma once

#include <atomic>
#include <cstdint>

#include "support/log/log_record.h"

namespace mvn::log {

/// Where records go in the end. One thread writes; anybody may set the level.
class LogSink {
public:
    virtual ~LogSink() = default;

    LogSink(const LogSink&) = delete;
    LogSink& operator=(const LogSink&) = delete;

    /// Messages of a higher level are dropped. Compared as signed numbers, so that with -1 all are.
    void setMaximumLevel(std::int32_t level) noexcept { maximumLevel_ = level; }

    void log(const LogRecord& record) {
        if (static_cast<std::int32_t>(record.level) <= maximumLevel_) write(record);
    }

    /// The logger is about to end: a sink that waits for something gives up after one more try. Any thread.
    virtual void giveUpWaiting() noexcept {}

protected:
    explicit LogSink(std::int32_t maximumLevel) noexcept : maximumLevel_(maximumLevel) {}

private:
    virtual void write(const LogRecord& record) = 0;

    std::atomic<std::int32_t> maximumLevel_;
};

}  // namespace mvn::log
