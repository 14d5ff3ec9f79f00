#pragma once

#include "support/log/log_sink.h"

namespace mvn::log {

/// Lines on standard error in the colour of their level: bright red, bright yellow, grey, bright green. The
/// colour is set on standard output, where that is a terminal, and set back behind the line.
class ConsoleSink final : public LogSink {
public:
    explicit ConsoleSink(std::int32_t maximumLevel) noexcept : LogSink(maximumLevel) {}

private:
    void write(const LogRecord& record) override;
};

}  // namespace mvn::log
