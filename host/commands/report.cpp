#include "host/commands/report.h"

#include <algorithm>

#include <fmt/format.h>

#include "host/io/output_file.h"
#include "host/io/standard_error.h"
#include "host/io/standard_output.h"

namespace mvrtpfec {

namespace {

void writeJson(const nlohmann::ordered_json& json, const std::filesystem::path& path) {
    const std::string text = json.dump(2) + "\n";
    if (path == "-") return print(text);
    OutputFile file(path);
    file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    file.finish();
}

}  // namespace

nlohmann::ordered_json toJson(const RepairFigures& figures) {
    const RtpFecInTotals& receiver = figures.receiver;
    nlohmann::ordered_json json{{"received", receiver.received},  {"lost", receiver.lost},
                                {"rebuilt", receiver.rebuilt},    {"abandoned", receiver.abandoned},
                                {"delivered", figures.delivered}, {"resets", receiver.resets},
                                {"runts", figures.runts}};
    if (!figures.guard) return json;
    json.update({{"late", figures.guard->late},
                 {"repeated", figures.guard->repeated},
                 {"holes_skipped", figures.guard->holesSkipped},
                 {"fec_kept_back", figures.guard->fecKeptBack},
                 {"foreign", figures.guard->foreign},
                 {"restarts", figures.guard->restarts}});
    return json;
}

void addRows(Table& table, const RepairFigures& figures) {
    const RtpFecInTotals& receiver = figures.receiver;
    table.emplace_back("received", std::to_string(receiver.received));
    table.emplace_back("found missing", std::to_string(receiver.lost));
    table.emplace_back("rebuilt", std::to_string(receiver.rebuilt));
    table.emplace_back("abandoned", std::to_string(receiver.abandoned));
    table.emplace_back("delivered", std::to_string(figures.delivered));
    table.emplace_back("decoder resets", std::to_string(receiver.resets));
    if (figures.runts > 0) table.emplace_back("runts left out", std::to_string(figures.runts));
    if (!figures.guard) return;
    table.emplace_back("late", std::to_string(figures.guard->late));
    table.emplace_back("repeated", std::to_string(figures.guard->repeated));
    table.emplace_back("holes skipped", std::to_string(figures.guard->holesSkipped));
    table.emplace_back("FEC kept back", std::to_string(figures.guard->fecKeptBack));
    if (figures.guard->foreign > 0) table.emplace_back("foreign", std::to_string(figures.guard->foreign));
    if (figures.guard->restarts > 0)
        table.emplace_back("source restarts", std::to_string(figures.guard->restarts));
}

void logFigures(mvn::log::ILogger& log, const RepairFigures& figures) {
    Table table;
    addRows(table, figures);
    std::string line;
    for (const auto& [name, count] : table) {
        if (!line.empty()) line += ", ";
        line += name + ' ' + count;
    }
    log.Log(figures.receiver.abandoned > 0 ? 1 : 2, "%s", line.c_str());
}

void addSourceRows(Table& table, PacketSource& source) {
    if (source.cutDatagrams() > 0) table.emplace_back("cut, left out", std::to_string(source.cutDatagrams()));
    addSkippedRow(table, source.skipped());
}

std::uint64_t totalOf(const SkippedBytes* skipped) {
    return skipped != nullptr ? skipped->total() : 0;
}

void addSkippedRow(Table& table, const SkippedBytes* skipped) {
    if (totalOf(skipped) > 0) table.emplace_back("bytes skipped", std::to_string(totalOf(skipped)));
}

void tellSkipped(SkippedBytes* skipped, mvn::log::ILogger* log) {
    if (skipped == nullptr) return;
    for (const std::string& notice : skipped->takeNotices()) {
        tellPerson("mvrtpfec: " + notice + "\n");
        if (log != nullptr) log->Log(1, "%s", notice.c_str());
    }
}

void publish(const std::string& title, const Table& table, const std::string& verdict,
             const nlohmann::ordered_json& json, const std::filesystem::path& path) {
    std::string text = title + "\n";
    std::size_t width = 16;
    for (const auto& row : table) width = std::max(width, row.first.size());
    for (const auto& [name, value] : table) text += fmt::format("  {:<{}} {:>10}\n", name, width, value);
    if (!verdict.empty()) text += verdict + "\n";
    path == "-" ? tellPerson(text) : print(text);
    flushPrinted();
    if (!path.empty()) writeJson(json, path);
}

}  // namespace mvrtpfec
