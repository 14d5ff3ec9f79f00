#include "host/commands/options.h"

#include <exception>
#include <map>
#include <string>

#include "host/commands/commands.h"

namespace mvrtpfec {

namespace {

/// FECB needs the port four above.
constexpr int maxMediaPort = 65531;

}  // namespace

void addMatrixOptions(CLI::App& command, MatrixConfig& matrix) {
    const std::map<std::string, FecMode> modes{{"row", fecRow}, {"column", fecColumn}, {"both", fecBoth}};
    command.add_option("--mode", matrix.mode, "FEC packets to make: row, column or both")
        ->required()
        ->transform(CLI::CheckedTransformer(modes))
        ->type_name("MODE");
    command.add_option("--columns", matrix.columns, "L, columns of the matrix: 1 to 20, with both 4 to 20")
        ->required()
        ->type_name("L");
    command.add_option("--rows", matrix.rows, "D, rows of the matrix: 4 to 20; L x D at most 100")
        ->required()
        ->type_name("D");
}

void addPortOption(CLI::App& command, std::uint16_t& port) {
    command.add_option("--port", port, "UDP port of the media; FECA is two above, FECB four")
        ->check(CLI::Range(1, maxMediaPort))
        ->capture_default_str()
        ->type_name("P");
}

void addGuardOption(CLI::App& command, bool& guard) {
    const std::map<std::string, bool> states{{"on", true}, {"off", false}};
    command
        .add_option(
            "--guard", guard,
            std::string("Packet guard in front of the receiver: on or off [") + (guard ? "on]" : "off]"))
        ->transform(CLI::CheckedTransformer(states))
        ->type_name("STATE");
}

void addJsonOption(CLI::App& command, std::string& path) {
    command
        .add_option("--json", path, "Write the figures as one JSON object to FILE, or - for standard output")
        ->type_name("FILE|-");
}

void checkMatrix(const MatrixConfig& matrix) {
    try {
        CFecComposer::checkMatrix(matrix.mode, matrix.columns, matrix.rows);
    } catch (const std::exception& error) {
        throw UsageError(error.what());
    }
}

FileFormat requireFormat(const std::string& path) {
    try {
        return formatOf(path);
    } catch (const std::exception& error) {
        throw UsageError(error.what());
    }
}

}  // namespace mvrtpfec
