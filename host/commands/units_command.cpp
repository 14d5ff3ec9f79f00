#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "host/commands/commands.h"
#include "host/commands/media_options.h"
#include "host/commands/options.h"
#include "host/commands/unit_report.h"
#include "host/io/file_error.h"
#include "host/io/run_files.h"
#include "host/io/standard_output.h"
#include "host/media/unit_clock.h"
#include "platform/files/utf8_path.h"

namespace mvrtpfec {

namespace {

struct UnitsOptions {
    std::filesystem::path in;
    std::filesystem::path json;
    const StreamFormat* format = nullptr;
    std::optional<FrameRate> frameRate;
    bool summary = false;
};

/// The work has lost its purpose.
struct NobodyReads {};

/// A line a unit, where it goes by.
class UnitTable {
public:
    explicit UnitTable(const UnitsOptions& options) : options_(options) {
        tell(fmt::format("{:>8} {:>14} {:>9}  {}\n", "index", "time", "size", "type"));
    }

    void add(const NAL& unit, const std::string& kind) {
        const SampleTiming& timing = unit.timing;
        const std::string time =
            timing.hasPts != 0
                ? fmt::format("{:.6f}", static_cast<double>(timing.pts) / static_cast<double>(unitsOfTime))
                : "-";
        tell(fmt::format("{:>8} {:>14} {:>9}  {}\n", index_++, time, unit.size(), kind));
    }

private:
    void tell(const std::string& line) {
        if (options_.json == "-")
            std::fputs(line.c_str(), stderr);
        else
            print(line);
        if (isReaderGone() && options_.json.empty()) throw NobodyReads();
    }

    const UnitsOptions& options_;
    std::uint64_t index_ = 0;
};

void runUnits(const UnitsOptions& options) {
    const auto samples = openSamples(options.in, options.format->type);
    std::optional<UnitTable> table;
    if (!options.summary) table.emplace(options);
    UnitCounter counter(nullptr, [&](const NAL& unit, const std::string& kind) {
        if (table) table->add(unit, kind);
    });
    const auto clock = makeUnitClock(options.format->type, options.frameRate);
    UnitTimer timer(clock.get(), counter);
    const auto parser = createNALBuilder(options.format->type);
    parser->setListener(&timer);
    const std::uint64_t refused = feed(*samples, *parser);
    tellSkipped(samples->skipped(), nullptr);
    const UnitFigures& figures = counter.figures();
    if (figures.units == 0)
        throw FileError(options.in,
                        refused > 0 ? "every one of its units is malformed" : "no unit of this format found");

    Table rows;
    addRows(rows, figures, refused);
    if (figures.first) rows.emplace_back("first to last", secondsText(figures.span()));
    addSkippedRow(rows, samples->skipped());
    auto json = toJson(figures, refused);
    if (samples->skipped() != nullptr) json["skipped_bytes"] = samples->skipped()->total();
    publish(fmt::format("{}, {}", platform::utf8From(options.in), options.format->name), rows, "", json,
            options.json);
}

}  // namespace

void addUnitsCommand(CLI::App& app) {
    const auto options = std::make_shared<UnitsOptions>();
    CLI::App* command = app.add_subcommand("units", "List the units of an elementary stream");
    addPath(*command, "IN", options->in, "Elementary stream")->required();
    addFormatOption(*command, options->format);
    addFrameRateOption(*command, options->frameRate);
    command->add_flag("--summary", options->summary, "Only count the units");
    addJsonOption(*command, options->json);
    command->footer(formatList(false) +
                    "Examples:\n"
                    "  mvrtpfec units movie.264 --format h264\n"
                    "  mvrtpfec units movie.265 --format hevc --frame-rate 50 --summary --json -");
    command->callback([options] {
        requireDistinct({{options->in}, {options->json}});
        try {
            runUnits(*options);
        } catch (const NobodyReads&) {
            return;
        }
    });
}

}  // namespace mvrtpfec
