#include "host/live/reception_report.h"

#include <cerrno>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "host/commands/report.h"
#include "host/io/file_error.h"
#include "platform/files.h"
#include "platform/terminal.h"

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

std::string matrixText(const ReceptionFigures& reception) {
    if (reception.columns == 0) return "no FEC yet";
    if (reception.rows == 0) return fmt::format("L {}", reception.columns);
    return fmt::format("{} x {}", reception.columns, reception.rows);
}

}  // namespace

ReceptionReport::ReceptionReport(const std::filesystem::path& json)
    : json_(openJson(json)), isTerminal_(platform::isErrorTerminal()) {}

ReceptionReport::~ReceptionReport() {
    if (isTerminal_) fmt::print(stderr, "\n");
}

void ReceptionReport::interval(const ReceptionTotals& totals, std::chrono::nanoseconds latency) {
    const auto now = std::chrono::steady_clock::now();
    const double seconds = std::max(std::chrono::duration<double>(now - lastTime_).count(), 1e-3);
    const double bitRate =
        8.0 * static_cast<double>(totals.reception.mediaBytes - last_.reception.mediaBytes) / seconds;
    const RtpFecInTotals& receiver = totals.repair.receiver;
    fmt::print(
        stderr,
        "{}{:.3f} Mbit/s, {}, latency {:.0f} ms, received {}, lost {}, rebuilt {}, lost for good {}, FEC "
        "missing {}, longest burst {}, jitter {:.1f} ms{}",
        isTerminal_ ? "\r\033[K" : "", bitRate / 1e6, matrixText(totals.reception), milliseconds(latency),
        totals.reception.media, receiver.lost, receiver.rebuilt, receiver.abandoned,
        totals.reception.fecMissing, totals.reception.longestGap, milliseconds(totals.reception.jitter),
        isTerminal_ ? "" : "\n");
    if (json_) writeJson(totals, seconds, milliseconds(latency));
    last_ = totals;
    lastTime_ = now;
}

void ReceptionReport::writeJson(const ReceptionTotals& totals, double seconds, double latency) {
    const ReceptionFigures& now = totals.reception;
    const ReceptionFigures& before = last_.reception;
    nlohmann::ordered_json line;
    line["interval_seconds"] = seconds;
    line["interval"] = {{"media_packets", now.media - before.media},
                        {"media_bytes", now.mediaBytes - before.mediaBytes},
                        {"fec_packets", now.fec - before.fec},
                        {"lost_packets", totals.repair.receiver.lost - last_.repair.receiver.lost},
                        {"rebuilt_packets", totals.repair.receiver.rebuilt - last_.repair.receiver.rebuilt},
                        {"latency_ms", latency}};
    line["total"] = toJson(totals.repair);
    line["total"].update({{"media_packets", now.media},
                          {"media_bytes", now.mediaBytes},
                          {"fec_packets", now.fec},
                          {"fec_missing_packets", now.fecMissing},
                          {"foreign_packets", now.foreign + totals.tooLong},
                          {"longest_burst_packets", now.longestGap},
                          {"source_restarts", now.restarts},
                          {"fec_not_turned_packets", totals.notTurned},
                          {"refused_datagrams", totals.refused}});
    line["columns"] = now.columns;
    line["rows"] = now.rows;
    line["jitter_ms"] = milliseconds(now.jitter);
    fmt::print(json_.get(), "{}\n", line.dump());
    std::fflush(json_.get());
}

}  // namespace mvrtpfec
