#include "host/commands/report.h"

#include <algorithm>

#include <fmt/format.h>

#include "host/commands/commands.h"
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
    const LedgerFigures& stream = figures.stream;
    nlohmann::ordered_json json{{"received", figures.receiver.received},
                                {"lost", stream.lost()},
                                {"rebuilt", stream.rebuilt},
                                {"lost_for_good", stream.lostForGood},
                                {"longest_burst", stream.longestBurst},
                                {"outages", stream.outages},
                                {"restarts", stream.restarts},
                                {"abandoned", figures.receiver.abandoned},
                                {"delivered", figures.delivered},
                                {"resets", figures.resets()},
                                {"runts", figures.runts}};
    if (!figures.guard) return json;
    json.update({{"late", figures.guard->late},
                 {"repeated", figures.guard->repeated},
                 {"holes_skipped", figures.guard->holesSkipped},
                 {"fec_kept_back", figures.guard->fecKeptBack},
                 {"foreign", figures.guard->foreign}});
    return json;
}

void addRows(Table& table, const RepairFigures& figures) {
    const auto add = [&](const char* name, std::uint64_t count) {
        table.emplace_back(name, std::to_string(count));
    };
    const auto addIfAny = [&](const char* name, std::uint64_t count) {
        if (count > 0) add(name, count);
    };
    const LedgerFigures& stream = figures.stream;
    add("received", figures.receiver.received);
    add("lost", stream.lost());
    add("rebuilt", stream.rebuilt);
    add("lost for good", stream.lostForGood);
    add("longest burst", stream.longestBurst);
    addIfAny("outages", stream.outages);
    addIfAny("source restarts", stream.restarts);
    add("delivered", figures.delivered);
    add("decoder resets", figures.resets());
    addIfAny("runts left out", figures.runts);
    if (!figures.guard) return;
    add("late", figures.guard->late);
    add("repeated", figures.guard->repeated);
    add("holes skipped", figures.guard->holesSkipped);
    add("FEC kept back", figures.guard->fecKeptBack);
    addIfAny("foreign", figures.guard->foreign);
}

nlohmann::ordered_json toJson(const FecFigures& fec) {
    return {{"mode", modeText(fec)},
            {"columns", fec.columns},
            {"rows", fec.rows},
            {"fec_packets", fec.packets},
            {"fec_missing_packets", fec.missing}};
}

void addRows(Table& table, const FecFigures& fec) {
    table.emplace_back("matrix", fec.packets == 0 ? "unknown" : matrixText(fec));
    table.emplace_back("mode", modeText(fec));
    table.emplace_back("FEC packets", std::to_string(fec.packets));
    table.emplace_back("FEC missing", std::to_string(fec.missing));
}

void requireWhole(const RepairFigures& figures) {
    if (figures.stream.lostForGood > 0) throw LossError("packets were lost for good");
}

void logFigures(mvn::log::ILogger& log, const RepairFigures& figures) {
    Table table;
    addRows(table, figures);
    std::string line;
    for (const auto& [name, count] : table) {
        if (!line.empty()) line += ", ";
        line += name + ' ' + count;
    }
    log.Log(figures.stream.lostForGood > 0 ? 1 : 2, "%s", line.c_str());
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
    if (!path.empty()) writeJson(json, path);
    flushPrinted();
}

}  // namespace mvrtpfec
