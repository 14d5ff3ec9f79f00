#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace mvn::log {

/// Wall time since 1970.
struct LogTime {
    std::int64_t seconds = 0;
    std::uint32_t milliseconds = 0;
};

using LogClock = std::function<LogTime()>;

/// The system's.
LogTime logTimeNow();

/// What a logger hands to its sinks. Levels count from 0, the most severe.
struct LogRecord {
    std::uint32_t level = 0;
    std::string text;
    LogTime time;
};

/// "Mon Nov 23 12:00:00.250 ", local time, in English whatever the locale.
std::string timePrefix(const LogTime& time);

/// The three English letters of a month counted from 0.
const char* monthName(int month) noexcept;

}  // namespace mvn::log
