#pragma once

#include <chrono>
#include <filesystem>
#include <string>

#include "host/live/json_lines.h"
#include "host/live/reception_figures.h"

namespace mvrtpfec {

/// Tells how reception goes: a line on standard error, rewritten in place on a terminal, and JSON lines. Who
/// doesn't read them misses some, but no packet waits for it.
class ReceptionReport {
public:
    /// See JsonLines.
    explicit ReceptionReport(const std::filesystem::path& json);
    ~ReceptionReport();

    ReceptionReport(const ReceptionReport&) = delete;
    ReceptionReport& operator=(const ReceptionReport&) = delete;

    /// What happened since the last call, in JSON since the last line. `latency` is the longest of that time.
    void interval(const ReceptionTotals& totals, std::chrono::nanoseconds latency);
    /// The last one, for which a reader is waited for.
    void end(const ReceptionTotals& totals, std::chrono::nanoseconds latency);

    /// False when JSON lines couldn't be written, which has been told then; a reader who has gone is no
    /// reason.
    bool isWhole() const { return !json_.hasFailed(); }

private:
    struct Look {
        ReceptionTotals totals;
        SteadyTime time = std::chrono::steady_clock::now();
    };

    void tell(const Look& now, std::chrono::nanoseconds latency, std::chrono::milliseconds patience);
    void tellPersonOf(const Look& now, std::chrono::nanoseconds latency,
                      std::chrono::milliseconds patience) const;
    std::string lineOf(const Look& now, std::chrono::nanoseconds latency) const;
    std::string jsonOf(const Look& now) const;

    JsonLines json_;
    Look told_;                            ///< to a person
    Look written_;                         ///< in JSON
    std::chrono::nanoseconds latency_{0};  ///< the longest since then
    bool isTerminal_;
};

}  // namespace mvrtpfec
