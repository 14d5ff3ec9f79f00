#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "host/io/run_files.h"
#include "host/log/log_options.h"
#include "mvrtpfec/log_perf.h"

namespace mvrtpfec {

/// The log of one run: a logger with a queue behind it, the statistics in front, sampled once a second.
class ProgramLog {
public:
    /// Throws UsageError, std::system_error.
    explicit ProgramLog(const LogOptions& options);
    /// Writes what is queued and a last line of statistics.
    ~ProgramLog();

    ProgramLog(const ProgramLog&) = delete;
    ProgramLog& operator=(const ProgramLog&) = delete;

    /// Lives as long as this.
    mvn::log::ILogPerf& log();

private:
    void sampleEachSecond();

    struct Parts;
    std::unique_ptr<Parts> parts_;
    std::mutex mutex_;
    std::condition_variable ending_;
    bool ends_ = false;
    std::thread sampler_;
};

/// Does a command's work with its log, which tells how the work begins and ends, and what an earlier run left
/// unfinished beside the files to be written. Throws UsageError, before it opens anything, when one of them,
/// those of the log included, is another.
void runLogged(const LogOptions& options, const std::string& what, RunFiles files,
               const std::function<void(mvn::log::ILogPerf&)>& work);

}  // namespace mvrtpfec
