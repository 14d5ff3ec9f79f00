#pragma once

#include "mvrtpfec/log_perf.h"

namespace mvn::log {

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
