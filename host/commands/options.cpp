#include "host/commands/options.h"

#include <algorithm>
#include <array>
#include <exception>
#include <ranges>
#include <string>
#include <utility>

#include <CLI/CLI.hpp>
#include <fmt/ranges.h>

#include "host/commands/choice_option.h"
#include "host/io/file_error.h"
#include "host/io/standard_error.h"
#include "host/plan/matrix_presets.h"
#include "host/usage_error.h"
#include "platform/files/utf8_path.h"

namespace mvrtpfec {

namespace {

/// FECB needs the port four above.
constexpr int maxMediaPort = 65531;

auto presetNames() {
    return std::views::transform(matrixPresets, &MatrixPreset::name);
}

/// What the composer takes; the message of one that is longer says enough.
constexpr std::int32_t longestSide = 20;

/// Rows of a matrix that has only row FEC, where they mean nothing: so many go with any number of columns.
constexpr std::int32_t anyRows = 4;

void requireSide(const CLI::App& command, const std::string& side) {
    if (command.count(side) == 0 && command.count("--preset") == 0)
        throw UsageError(fmt::format("{} is required, or --preset ({}) for the whole matrix", side,
                                     fmt::join(presetNames(), ", ")));
}

}  // namespace

CLI::Option* addPath(CLI::App& command, const std::string& name, std::filesystem::path& path,
                     const std::string& help) {
    const auto take = [&path](const std::string& text) { path = platform::pathFromUtf8(text); };
    return command.add_option_function<std::string>(name, take, help);
}

void addMatrixOptions(CLI::App& command, MatrixConfig& matrix) {
    const std::array sides{
        addChoice(command, "--mode", matrix.mode, {{"row", fecRow}, {"column", fecColumn}, {"both", fecBoth}},
                  "FEC packets to make: row, column or both")
            ->type_name("MODE"),
        command
            .add_option("--columns", matrix.columns, "L, columns of the matrix: 1 to 20, with both 4 to 20")
            ->type_name("L"),
        command
            .add_option("--rows", matrix.rows,
                        "D, rows of the matrix: 4 to 20; L x D at most 100; not needed with row")
            ->type_name("D")};
    const auto take = [&matrix](const std::string& name) {
        const auto preset = std::ranges::find(matrixPresets, name, &MatrixPreset::name);
        if (preset == matrixPresets.end()) throw noSuchWord("--preset", name, "choice", presetNames());
        matrix = preset->matrix;
    };
    CLI::Option* const preset =
        command
            .add_option_function<std::string>(
                "--preset", take, fmt::format("All three by a name: {}", fmt::join(presetNames(), ", ")))
            ->type_name("NAME");
    for (CLI::Option* const side : sides) side->excludes(preset);
}

void addPortOption(CLI::App& command, std::uint16_t& port) {
    command.add_option("--port", port, "UDP port of the media; FECA is two above, FECB four")
        ->check(CLI::Range(1, maxMediaPort))
        ->capture_default_str()
        ->type_name("P");
}

void addGuardOptions(CLI::App& command, GuardOptions& guard) {
    addChoice(
        command, "--guard", guard.isOn, {{"on", true}, {"off", false}},
        std::string("Packet guard in front of the receiver: on or off [") + (guard.isOn ? "on]" : "off]"))
        ->type_name("STATE");
    command
        .add_option("--guard-window", guard.settings.window,
                    "Packets by which one may be overtaken and be put in its place by the guard")
        ->check(CLI::Range(std::size_t{1}, ReceiverGuard::largestWindow))
        ->capture_default_str()
        ->type_name("N");
}

void addFecFormatOption(CLI::App& command, FecFormat& format) {
    addChoice(command, "--fec-format", format,
              {{"native", FecFormat::native}, {"standard", FecFormat::standard}},
              "FEC packets as our receivers read them or as SMPTE 2022-1 equipment does: native or standard "
              "[native]")
        ->type_name("FORMAT");
}

void addFecIntakeOption(CLI::App& command, std::optional<FecFormat>& format) {
    addChoice(
        command, "--fec-format", format,
        {{"auto", std::optional<FecFormat>()},
         {"native", std::optional(FecFormat::native)},
         {"standard", std::optional(FecFormat::standard)}},
        "FEC packets of our senders, of SMPTE 2022-1 equipment, or by what comes: native, standard or auto "
        "[auto]")
        ->type_name("FORMAT");
}

void addJsonOption(CLI::App& command, std::filesystem::path& path) {
    addPath(command, "--json", path, "Write the figures as one JSON object to FILE, or - for standard output")
        ->type_name("FILE|-");
}

void addModuleOption(CLI::App& command, std::filesystem::path& path) {
    addPath(command, "--module", path,
            "File that the filters are in; left out: as registered, or the one beside the program")
        ->type_name("FILE");
}

void requireMatrix(const CLI::App& command, MatrixConfig& matrix) {
    requireSide(command, "--mode");
    requireSide(command, "--columns");
    if (matrix.mode != fecRow)
        requireSide(command, "--rows");
    else if (command.count("--rows") == 0)
        matrix.rows = anyRows;
    try {
        CFecComposer::checkMatrix(matrix.mode, matrix.columns, matrix.rows);
    } catch (const std::exception& error) {
        std::string message = error.what();
        const auto size = std::int64_t{matrix.columns} * matrix.rows;
        if (size > maxMatrixSize && std::max(matrix.columns, matrix.rows) <= longestSide)
            message += fmt::format(" ({} x {} is {}, at most {} are allowed)", matrix.columns, matrix.rows,
                                   size, maxMatrixSize);
        throw UsageError(message);
    }
}

void requireMedia(std::uint64_t packets, const PacketSource& source, const std::filesystem::path& path,
                  std::uint16_t port) {
    if (packets > 0) return;
    std::string message = "no usable RTP media packets to UDP port " + std::to_string(port);
    if (source.cutDatagrams() > 0)
        message += ", " + std::to_string(source.cutDatagrams()) + " cut short by the capture";
    if (!source.breakage().empty()) message += "; " + source.breakage();
    throw FileError(path, message);
}

void tellBreak(const PacketSource& source, const std::filesystem::path& path, mvn::log::ILogger* log) {
    if (source.breakage().empty()) return;
    const std::string text = platform::utf8From(path) + ": " + source.breakage();
    tellPerson("mvrtpfec: warning: " + text + "\n");
    if (log != nullptr) log->Log(1, "%s", text.c_str());
}

}  // namespace mvrtpfec
