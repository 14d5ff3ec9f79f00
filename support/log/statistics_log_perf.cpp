#include "support/log/statistics_log_perf.h"

#include <algorithm>
#include <cstdarg>
#include <utility>

#include "platform/threads/sync.h"
#include "support/log/log_message.h"

namespace mvn::log {

namespace {

constexpr std::uint32_t statisticsLevel = 2;
constexpr const char* bufferFull = "Pin output buffer full : %s";

/// Values with a comma behind each.
class Line {
public:
    Line& add(const std::string& value) {
        text_ += value + ',';
        return *this;
    }
    template <class Number>
    Line& add(Number value) {
        return add(std::to_string(value));
    }
    std::string take() { return std::move(text_); }

private:
    std::string text_;
};

}  // namespace

StatisticsLogPerf::StatisticsLogPerf(ILogger& logger, LogSink* statistics, const StatisticsSettings& settings,
                                     StatisticsSources sources)
    : logger_(logger),
      statistics_(statistics),
      settings_(settings),
      sources_(std::move(sources)),
      watchdog_(settings.watchdog) {}

void StatisticsLogPerf::Log(std::uint32_t level, const char* format, ...) {
    MessageBuffer message;
    va_list arguments;
    va_start(arguments, format);
    formatMessage(message, format, arguments);
    va_end(arguments);
    logger_.Log(level, "%s", message.data());
}

void StatisticsLogPerf::CountResync() {
    const std::lock_guard lock(mutex_);
    ++counters_.resyncs;
}

void StatisticsLogPerf::CountTsDiscontinuity() {
    const std::lock_guard lock(mutex_);
    ++counters_.discontinuities;
}

void StatisticsLogPerf::CountDecodedPicture() {
    const std::lock_guard lock(mutex_);
    ++counters_.pictures;
}

void StatisticsLogPerf::AddPoliticChoices(std::int32_t amount) {
    const std::lock_guard lock(mutex_);
    counters_.politicChoices = static_cast<std::int32_t>(
        static_cast<std::uint32_t>(counters_.politicChoices) + static_cast<std::uint32_t>(amount));
}

std::uint32_t StatisticsLogPerf::now() const {
    return sources_.tickCount ? sources_.tickCount() : GetTickCount();
}

StatisticsLogPerf::Buffer* StatisticsLogPerf::find(const std::string& name) {
    const auto found = std::ranges::find(buffers_, name, &Buffer::name);
    return found == buffers_.end() ? nullptr : &*found;
}

void StatisticsLogPerf::RegisterBuffer(const char* name) {
    // So that the first one found full is warned of at once.
    const std::uint32_t longAgo = now() - settings_.warningInterval;
    const std::lock_guard lock(mutex_);
    if (find(name) == nullptr) buffers_.push_back({.name = name, .lastWarning = longAgo});
}

void StatisticsLogPerf::NotifyBufferFull(const char* name) {
    watchdog_.countBufferFull();
    const std::uint32_t events = countBufferFull(name);
    if (events == 1) logger_.Log(settings_.warningLevel, bufferFull, name);
    if (events > 1)
        logger_.Log(settings_.warningLevel, "Pin output buffer full : %s (x%d)", name,
                    static_cast<int>(events));
}

/// How many of them to warn of now. An unregistered one is warned of each time.
std::uint32_t StatisticsLogPerf::countBufferFull(const std::string& name) {
    const std::lock_guard lock(mutex_);
    Buffer* const buffer = find(name);
    if (buffer == nullptr) return 1;
    ++buffer->total;
    ++buffer->sinceWarning;
    const std::uint32_t tick = now();
    if (tick - buffer->lastWarning < settings_.warningInterval) return 0;
    buffer->lastWarning = tick;
    return std::exchange(buffer->sinceWarning, 0U);
}

bool StatisticsLogPerf::writeLine() {
    const std::lock_guard sampling(sampling_);
    const LogTime time = sources_.clock();
    const platform::SystemFigures figures = sources_.system();
    const auto cpu = cpu_.update(figures);
    if (!cpu || statistics_ == nullptr) return false;
    std::string line = headerWritten_ ? values(figures, *cpu, time) : header();
    headerWritten_ = true;
    statistics_->log({statisticsLevel, std::move(line), time});
    return true;
}

std::string StatisticsLogPerf::header() {
    std::string line =
        "Cpu,TotalCpu,WorkingSet,PrivateBytes,NumBufferFull,NumResync,NumTsDiscontinuity,KernelTime,UserTime,"
        "Date,NumDecPictures,VirtualSize,HandleCount,NumPoliticChoices,";
    const std::lock_guard lock(mutex_);
    columns_ = buffers_.size();
    for (const Buffer& buffer : buffers_) line += "buffer_full_" + buffer.name + ',';
    return line + "LastDeltaNumOverAllBufferFull,NumPeriodThresholdReached,NeedRestart,";
}

std::string StatisticsLogPerf::values(const platform::SystemFigures& figures, const CpuLoad::Percent& cpu,
                                      const LogTime& time) {
    const RestartWatchdog::State watchdog = watchdog_.state();
    const std::lock_guard lock(mutex_);
    std::uint32_t allFull = 0;
    for (const Buffer& buffer : buffers_) allFull += buffer.total;
    Line line;
    line.add(cpu.process).add(cpu.total).add(figures.workingSet).add(figures.privateBytes).add(allFull);
    line.add(counters_.resyncs).add(counters_.discontinuities);
    line.add(figures.processKernelTime).add(figures.processUserTime);
    line.add(time.seconds * 1000 + time.milliseconds).add(counters_.pictures).add(figures.committedBytes);
    line.add(figures.handleCount).add(counters_.politicChoices);
    for (std::size_t i = 0; i < columns_; ++i) line.add(buffers_[i].total);
    line.add(watchdog.lastDelta).add(watchdog.periodsOverThreshold).add(watchdog.needsRestart ? 1 : 0);
    return line.take();
}

}  // namespace mvn::log
