#include "support/log/network_sink.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/process/local_time.h"
#include "support/string_format.h"

namespace mvn::log {

namespace {

constexpr std::size_t longestLine = 1024;
constexpr std::uint32_t counters = 10000;
constexpr int localUse0 = 16 * 8;

int priority(std::uint32_t level) {
    constexpr std::array<int, 4> severities{3, 4, 6, 7};
    return localUse0 + severities.at(std::min<std::size_t>(level, severities.size() - 1));
}

}  // namespace

NetworkSink::NetworkSink(platform::SocketHandle socket, std::string sourceName, std::int32_t maximumLevel,
                         std::uint32_t firstCounter)
    : LogSink(maximumLevel),
      socket_(socket),
      sourceName_(std::move(sourceName)),
      counter_(firstCounter % counters) {}

void NetworkSink::write(const LogRecord& record) {
    const std::tm local = platform::localTime(record.time.seconds);
    std::string line =
        stringFormat("<%d>%s %02d %02d:%02d:%02d ", priority(record.level), monthName(local.tm_mon),
                     local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec) +
        sourceName_ + stringFormat(" %04d ", static_cast<int>(counter_)) + record.text;
    if (line.size() > longestLine) line.resize(longestLine);
    platform::sendWhole(socket_, line.c_str(), line.size() + 1);
    counter_ = (counter_ + 1) % counters;
}

}  // namespace mvn::log
