#include "host/live/reception_report.h"

#include <algorithm>
#include <string>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "host/io/standard_error.h"
#include "platform/process/terminal.h"

namespace mvrtpfec {

namespace {

using namespace std::chrono_literals;

double milliseconds(std::chrono::nanoseconds time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

double secondsBetween(SteadyTime from, SteadyTime to) {
    return std::max(std::chrono::duration<double>(to - from).count(), 1e-3);
}

}  // namespace

ReceptionReport::ReceptionReport(const std::filesystem::path& json)
    : json_(json), isTerminal_(platform::isErrorTerminal()) {}

ReceptionReport::~ReceptionReport() {
    endStatus();
}

void ReceptionReport::interval(const ReceptionTotals& totals, std::chrono::nanoseconds latency) {
    tell({totals}, latency, 0ms);
}

void ReceptionReport::end(const ReceptionTotals& totals, std::chrono::nanoseconds latency) {
    tell({totals}, latency, 1s);
}

void ReceptionReport::tell(const Look& now, std::chrono::nanoseconds latency,
                           std::chrono::milliseconds patience) {
    tellPersonOf(now, latency, patience);
    told_ = now;
    latency_ = std::max(latency_, latency);
    if (!json_.isOpen() || !json_.write(jsonOf(now), patience)) return;
    written_ = now;
    latency_ = 0ns;
}

void ReceptionReport::tellPersonOf(const Look& now, std::chrono::nanoseconds latency,
                                   std::chrono::milliseconds patience) const {
    const std::string text = noMediaText(now.totals).value_or(lineOf(now, latency));
    if (isTerminal_)
        showStatus(text, patience);
    else
        tellPerson(text + "\n", patience);
}

std::string ReceptionReport::lineOf(const Look& now, std::chrono::nanoseconds latency) const {
    const ReceptionFigures& reception = now.totals.reception;
    const double bits = 8.0 * static_cast<double>(reception.mediaBytes - told_.totals.reception.mediaBytes);
    const LedgerFigures& stream = now.totals.repair.stream;
    return fmt::format(
        "{:.3f} Mbit/s, {}, latency {:.0f} ms, received {}, lost {}, rebuilt {}, lost for good {}, FEC "
        "missing {}, longest burst {}, jitter {:.1f} ms",
        bits / secondsBetween(told_.time, now.time) / 1e6, matrixText(reception.fec), milliseconds(latency),
        reception.media, stream.lost(), stream.rebuilt, stream.lostForGood, reception.fec.missing,
        stream.longestBurst, milliseconds(reception.jitter));
}

std::string ReceptionReport::jsonOf(const Look& now) const {
    nlohmann::ordered_json line{{"interval_seconds", secondsBetween(written_.time, now.time)}};
    const auto counters = countersOf(now.totals);
    const auto before = countersOf(written_.totals);
    for (std::size_t i = 0; i < counters.size(); ++i) {
        const std::string name(counters[i].name);
        line["interval"][name] = counters[i].value - before[i].value;
        line["total"][name] = counters[i].value;
    }
    line["interval"]["longest_latency_ms"] = milliseconds(latency_);
    line["longest_burst_packets"] = now.totals.repair.stream.longestBurst;
    line["columns"] = now.totals.reception.fec.columns;
    line["rows"] = now.totals.reception.fec.rows;
    line["jitter_ms"] = milliseconds(now.totals.reception.jitter);
    return line.dump() + "\n";
}

}  // namespace mvrtpfec
