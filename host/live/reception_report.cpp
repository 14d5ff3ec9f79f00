#include "host/live/reception_report.h"

#include <cerrno>
#include <string>
#include <system_error>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "host/io/file_error.h"
#include "host/io/standard_error.h"
#include "platform/files/files.h"
#include "platform/process/terminal.h"

namespace mvrtpfec {

namespace {

double milliseconds(std::chrono::nanoseconds time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

std::FILE* openJson(const std::filesystem::path& path) {
    if (path.empty()) return nullptr;
    std::FILE* const file = path == "-" ? platform::standardOutput() : platform::createText(path);
    if (file == nullptr) throw FileError(path, "cannot create", errno);
    return file;
}

}  // namespace

ReceptionReport::ReceptionReport(const std::filesystem::path& json)
    : json_(openJson(json)), isTerminal_(platform::isErrorTerminal()) {}

ReceptionReport::~ReceptionReport() {
    if (isTerminal_) tellPerson("\n");
}

void ReceptionReport::interval(const ReceptionTotals& totals, std::chrono::nanoseconds latency) {
    const auto now = std::chrono::steady_clock::now();
    const double seconds = std::max(std::chrono::duration<double>(now - lastTime_).count(), 1e-3);
    const double bitRate =
        8.0 * static_cast<double>(totals.reception.mediaBytes - last_.reception.mediaBytes) / seconds;
    const RtpFecInTotals& receiver = totals.repair.receiver;
    tellPerson(fmt::format(
        "{}{:.3f} Mbit/s, {}, latency {:.0f} ms, received {}, lost {}, rebuilt {}, lost for good {}, FEC "
        "missing {}, longest burst {}, jitter {:.1f} ms{}",
        isTerminal_ ? "\r\033[K" : "", bitRate / 1e6, matrixText(totals.reception), milliseconds(latency),
        totals.reception.media, receiver.lost, receiver.rebuilt, totals.lostForGood,
        totals.reception.fecMissing, totals.longestBurst(), milliseconds(totals.reception.jitter),
        isTerminal_ ? "" : "\n"));
    if (json_) writeJson(totals, seconds, milliseconds(latency));
    last_ = totals;
    lastTime_ = now;
}

void ReceptionReport::writeJson(const ReceptionTotals& totals, double seconds, double latency) {
    nlohmann::ordered_json line{{"interval_seconds", seconds}};
    const auto counters = countersOf(totals);
    const auto before = countersOf(last_);
    for (std::size_t i = 0; i < counters.size(); ++i) {
        const std::string name(counters[i].name);
        line["interval"][name] = counters[i].value - before[i].value;
        line["total"][name] = counters[i].value;
    }
    line["interval"]["longest_latency_ms"] = latency;
    line["longest_burst_packets"] = totals.longestBurst();
    line["columns"] = totals.reception.columns;
    line["rows"] = totals.reception.rows;
    line["jitter_ms"] = milliseconds(totals.reception.jitter);
    const std::string text = line.dump() + "\n";
    std::fwrite(text.data(), 1, text.size(), json_.get());
    if (std::fflush(json_.get()) == 0) return;
    tellPerson(fmt::format("mvrtpfec: no more JSON lines: {}\n", std::generic_category().message(errno)));
    json_.reset();
}

}  // namespace mvrtpfec
