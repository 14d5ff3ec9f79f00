#pragma once

#include <chrono>
#include <mutex>
#include <string>

#include <asio/ip/udp.hpp>

#include "host/live/reception_figures.h"
#include "host/net/text_server.h"

namespace mvrtpfec {

/// The figures in the text format of Prometheus, version 0.0.4. `latency` is the longest of the last
/// interval.
std::string metricsText(const ReceptionTotals& totals, std::chrono::nanoseconds latency);

/// Serves them at /metrics.
class ReceptionMetrics {
public:
    /// Throws std::system_error.
    explicit ReceptionMetrics(const asio::ip::udp::endpoint& local);

    void publish(const ReceptionTotals& totals, std::chrono::nanoseconds latency);

private:
    std::mutex mutex_;
    std::string text_;
    TextServer server_;
};

}  // namespace mvrtpfec
