#pragma once

#include "support/logger.h"

namespace mvn::log {

/// A logger that also counts what happens to the media. Any thread.
struct ILogPerf : ILogger, IBufferFullNotifier {
    virtual void CountResync() = 0;
    virtual void CountTsDiscontinuity() = 0;
    virtual void CountDecodedPicture() = 0;
    virtual void AddPoliticChoices(std::int32_t amount) = 0;
    /// Writes one line of statistics.
    virtual void Sample() = 0;
};

/// Counts nothing; messages go to the debugger output, each followed by a line feed sent by itself.
class DummyLogPerf : public ILogPerf {
public:
    [[gnu::format(printf, 3, 4)]] void Log(std::uint32_t level, const char* format, ...) override;
    void CountResync() override {}
    void CountTsDiscontinuity() override {}
    void CountDecodedPicture() override {}
    void AddPoliticChoices(std::int32_t) override {}
    void Sample() override {}
    void RegisterBuffer(const char*) override {}
    void NotifyBufferFull(const char*) override {}
};

}  // namespace mvn::log
