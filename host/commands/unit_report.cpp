#include "host/commands/unit_report.h"

#include <fmt/format.h>

#include "host/commands/interruption.h"
#include "host/commands/progress_bar.h"
#include "rtp_media/data/splice_info_section.h"

namespace mvrtpfec {

std::uint64_t feed(SampleSource& samples, NALBuilder& parser) {
    std::uint64_t refused = 0;
    ProgressBar progress;
    while (const SamplePtr sample = samples.read()) {
        throwIfInterrupted();
        progress.update([&] { return samples.progress(); });
        try {
            parser.input(sample);
        } catch (const SpliceInfoException&) {
            ++refused;
        }
    }
    parser.flush();
    return refused;
}

nlohmann::ordered_json toJson(const UnitFigures& figures, std::uint64_t refused) {
    nlohmann::ordered_json json{{"units", figures.units}, {"unit_bytes", figures.bytes}};
    json["kinds"] = nlohmann::ordered_json::object();
    for (const auto& [kind, count] : figures.kinds) json["kinds"][kind] = count;
    json["refused"] = refused;
    json["unit_span"] = figures.span();
    return json;
}

void addRows(Table& table, const UnitFigures& figures, std::uint64_t refused) {
    table.emplace_back("units", std::to_string(figures.units));
    for (const auto& [kind, count] : figures.kinds) table.emplace_back("  " + kind, std::to_string(count));
    if (refused > 0) table.emplace_back("malformed", std::to_string(refused));
    table.emplace_back("unit bytes", std::to_string(figures.bytes));
}

std::string secondsText(double seconds) {
    return fmt::format("{:.3f} s", seconds);
}

}  // namespace mvrtpfec
