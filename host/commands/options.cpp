#include "host/commands/options.h"

#include <algorithm>
#include <array>
#include <exception>
#include <string>
#include <utility>

#include <CLI/CLI.hpp>

#include "host/commands/choice_option.h"
#include "host/io/file_error.h"
#include "host/plan/matrix_presets.h"
#include "host/usage_error.h"
#include "platform/files/utf8_path.h"

namespace mvrtpfec {

namespace {

/// FECB needs the port four above.
constexpr int maxMediaPort = 65531;

std::string presetNames() {
    std::string names;
    for (const MatrixPreset& preset : matrixPresets) {
        if (!names.empty()) names += ", ";
        names += preset.name;
    }
    return names;
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
        command.add_option("--rows", matrix.rows, "D, rows of the matrix: 4 to 20; L x D at most 100")
            ->type_name("D")};
    const auto take = [&matrix, sides](const std::string& name) {
        const auto preset = std::ranges::find(matrixPresets, name, &MatrixPreset::name);
        if (preset == matrixPresets.end())
            throw CLI::ValidationError("--preset", "there is no choice '" + name + "'");
        matrix = preset->matrix;
        for (CLI::Option* const side : sides) side->required(false);
    };
    CLI::Option* const preset =
        command.add_option_function<std::string>("--preset", take, "All three by a name: " + presetNames())
            ->type_name("NAME");
    for (CLI::Option* const side : sides) side->required()->excludes(preset);
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

void checkMatrix(const MatrixConfig& matrix) {
    try {
        CFecComposer::checkMatrix(matrix.mode, matrix.columns, matrix.rows);
    } catch (const std::exception& error) {
        throw UsageError(error.what());
    }
}

void requireMedia(std::uint64_t packets, const PacketSource& source, const std::filesystem::path& path,
                  std::uint16_t port) {
    if (packets > 0) return;
    std::string message = "no usable RTP media packets to UDP port " + std::to_string(port);
    if (source.cutDatagrams() > 0)
        message += ", " + std::to_string(source.cutDatagrams()) + " cut short by the capture";
    throw FileError(path, message);
}

void requireDistinct(const std::filesystem::path& one, const std::filesystem::path& other) {
    if (one.empty() || other.empty()) return;
    std::error_code error;
    if (std::filesystem::weakly_canonical(one, error) == std::filesystem::weakly_canonical(other, error))
        throw UsageError(platform::utf8From(one) + " is named for two outputs");
}

}  // namespace mvrtpfec
