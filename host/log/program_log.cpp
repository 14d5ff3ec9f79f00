#include "host/log/program_log.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <utility>
#include <vector>

#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>
#include <fmt/format.h>

#include "host/io/output_file.h"
#include "host/io/standard_error.h"
#include "host/net/endpoint.h"
#include "platform/files/utf8_path.h"
#include "support/log/console_sink.h"
#include "support/log/file_sink.h"
#include "support/log/network_sink.h"
#include "support/log/queued_logger.h"
#include "support/log/statistics_log_perf.h"

namespace mvrtpfec {

namespace {

using namespace mvn::log;

constexpr std::string_view syslogPrefix = "syslog:";
constexpr std::int32_t everyLevel = 3;

void complain(const std::string& text) {
    tellPerson("mvrtpfec: " + text + "\n");
}

/// Lines on standard error, each below the status line.
class StandardErrorSink final : public LogSink {
public:
    explicit StandardErrorSink(std::int32_t maximumLevel) : LogSink(maximumLevel), console_(maximumLevel) {}

private:
    void write(const LogRecord& record) override {
        const auto claim = claimStandardError();
        console_.log(record);
    }

    ConsoleSink console_;
};

/// A socket that knows where its datagrams go.
asio::ip::udp::socket connectedSocket(asio::io_context& context, const std::string& target) {
    const auto endpoint = parseEndpoint(target);
    asio::ip::udp::socket socket(context, endpoint.protocol());
    socket.connect(endpoint);
    return socket;
}

}  // namespace

/// Those above outlive those below.
struct ProgramLog::Parts {
    explicit Parts(const LogOptions& options)
        : csv(options.statistics.empty()
                  ? nullptr
                  : std::make_unique<CsvFileSink>(options.statistics, everyLevel, FileSink::Opening::replaced,
                                                  complain)),
          logger(sinks(options)),
          statistics(logger, csv.get()) {
        // The header is written before there is a filter.
        for (const char* buffer : options.buffers) statistics.RegisterBuffer(buffer);
    }

    std::vector<std::unique_ptr<LogSink>> sinks(const LogOptions& options) {
        std::vector<std::unique_ptr<LogSink>> all;
        if (options.log.starts_with(syslogPrefix)) {
            socket = std::make_unique<asio::ip::udp::socket>(
                connectedSocket(context, options.log.substr(syslogPrefix.size())));
            all.push_back(std::make_unique<NetworkSink>(
                static_cast<platform::SocketHandle>(socket->native_handle()), "mvrtpfec", options.level));
        } else if (options.log == "-") {
            all.push_back(std::make_unique<StandardErrorSink>(options.level));
        } else if (!options.log.empty()) {
            all.push_back(std::make_unique<FileSink>(platform::pathFromUtf8(options.log), options.level,
                                                     FileSink::Opening::continued, complain));
        }
        return all;
    }

    asio::io_context context;
    std::unique_ptr<asio::ip::udp::socket> socket;
    std::unique_ptr<LogSink> csv;
    QueuedLogger logger;
    StatisticsLogPerf statistics;
};

ProgramLog::ProgramLog(const LogOptions& options) : parts_(std::make_unique<Parts>(options)) {
    if (parts_->csv) sampler_ = std::thread([this] { sampleEachSecond(); });
}

ProgramLog::~ProgramLog() {
    if (!sampler_.joinable()) return;
    parts_->csv->giveUpWaiting();  // the sampler may wait for a full disk with the lock
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
    }
    ending_.notify_one();
    sampler_.join();
}

ILogPerf& ProgramLog::log() {
    return parts_->statistics;
}

/// The header, then a line each second and one at the end.
void ProgramLog::sampleEachSecond() {
    using namespace std::chrono_literals;
    StatisticsLogPerf& statistics = parts_->statistics;
    std::unique_lock lock(mutex_);
    statistics.Sample();
    while (!ending_.wait_for(lock, 1s, [this] { return ends_; })) {
        statistics.Sample();
        statistics.tick();
    }
    // The system counts its times in steps, and a run may last less than one.
    for (int tries = 50; !statistics.writeLine() && --tries > 0;) std::this_thread::sleep_for(2ms);
}

namespace {

/// Also those that the log itself writes.
void addFiles(RunFiles& files, const LogOptions& options) {
    files.written.push_back(options.statistics);
    if (!options.log.starts_with(syslogPrefix)) files.written.push_back(platform::pathFromUtf8(options.log));
}

void tellUnfinished(const RunFiles& files, ILogger& log) {
    for (const auto& file : files.written) {
        const auto parts = unfinishedOf(file);
        if (parts.empty()) continue;
        const std::string text =
            fmt::format("{}{}: what another run has written, which was broken off or still goes on; kept",
                        platform::utf8From(parts.front()),
                        parts.size() > 1 ? fmt::format(" and {} more", parts.size() - 1) : "");
        complain(text);
        log.Log(1, "%s", text.c_str());
    }
}

}  // namespace

void runLogged(const LogOptions& options, const std::string& what, RunFiles files,
               const std::function<void(ILogPerf&)>& work) {
    addFiles(files, options);
    requireDistinct(files);
    ProgramLog log(options);
    log.log().Log(2, "%s begins", what.c_str());
    tellUnfinished(files, log.log());
    try {
        work(log.log());
    } catch (const std::exception& error) {
        log.log().Log(0, "%s ends: %s", what.c_str(), error.what());
        throw;
    }
    log.log().Log(2, "%s ends", what.c_str());
}

}  // namespace mvrtpfec
