#include "host/live/reception_metrics.h"

#include <iterator>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace mvrtpfec {

namespace {

double seconds(std::chrono::nanoseconds time) {
    return std::chrono::duration<double>(time).count();
}

}  // namespace

std::string metricsText(const ReceptionTotals& totals, std::chrono::nanoseconds latency) {
    std::string text;
    const auto add = [&](std::string_view name, std::string_view meaning, std::string_view type, auto value) {
        fmt::format_to(std::back_inserter(text),
                       "# HELP mvrtpfec_{0} {1}.\n# TYPE mvrtpfec_{0} {2}\nmvrtpfec_{0} {3}\n", name, meaning,
                       type, value);
    };
    for (const Counter& counter : countersOf(totals))
        add(fmt::format("{}_total", counter.name), counter.meaning, "counter", counter.value);
    const FecFigures& fec = totals.reception.fec;
    add("longest_burst_packets", "Most media packets missing in a row since the start", "gauge",
        totals.repair.stream.longestBurst);
    add("columns", "Columns of the matrix, 0 while unknown", "gauge", int{fec.columns});
    add("rows", "Rows of the matrix, 0 while unknown", "gauge", int{fec.rows});
    add("jitter_seconds", "Interarrival jitter", "gauge", seconds(totals.reception.jitter));
    add("longest_latency_seconds", "Longest time from arrival to delivery in the last interval", "gauge",
        seconds(latency));
    return text;
}

ReceptionMetrics::ReceptionMetrics(const asio::ip::udp::endpoint& local)
    : text_(metricsText({}, {})),
      server_(local.address().to_string(), local.port(),
              {"/metrics", "text/plain; version=0.0.4; charset=utf-8", [this] {
                   const std::lock_guard lock(mutex_);
                   return text_;
               }}) {}

void ReceptionMetrics::publish(const ReceptionTotals& totals, std::chrono::nanoseconds latency) {
    std::string text = metricsText(totals, latency);
    const std::lock_guard lock(mutex_);
    text_ = std::move(text);
}

}  // namespace mvrtpfec
