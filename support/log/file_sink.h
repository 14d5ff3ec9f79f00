#pragma once

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>

#include "support/log/log_sink.h"

namespace mvn::log {

/// Lines at the end of a file: "[Level 1] Mon Nov 23 12:00:00.250 text".
///
/// A line that the file doesn't take, as on a full disk, is tried again every second until it is whole, and
/// the trouble is told once. Meanwhile records wait in the logger's queue. At the end of the logger there is
/// one more try.
class FileSink : public LogSink {
public:
    using Complaint = std::function<void(const std::string&)>;

    /// What becomes of a file that is there already.
    enum class Opening { continued, replaced };

    /// Throws std::system_error.
    FileSink(const std::filesystem::path& path, std::int32_t maximumLevel, Opening opening,
             Complaint complain);
    ~FileSink() override;

    void giveUpWaiting() noexcept override;

protected:
    virtual std::string lineOf(const LogRecord& record) const;

private:
    void write(const LogRecord& record) override;
    bool waitForAnotherTry();
    void complain(int error);

    std::string name_;
    int descriptor_;
    Complaint complaint_;
    bool hasComplained_ = false;
    std::mutex mutex_;
    std::condition_variable ending_;
    bool gaveUp_ = false;
};

/// The texts alone: values with commas between them, none behind the last.
class CsvFileSink final : public FileSink {
public:
    using FileSink::FileSink;

private:
    std::string lineOf(const LogRecord& record) const override;
};

}  // namespace mvn::log
