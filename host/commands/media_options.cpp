#include "host/commands/media_options.h"

#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "host/commands/choice_option.h"

namespace mvrtpfec {

void addFormatOption(CLI::App& command, const StreamFormat*& format) {
    const auto take = [&format](const std::string& name) {
        format = findStreamFormat(name);
        if (format == nullptr)
            throw noSuchWord("--format", name, "format",
                             std::views::transform(streamFormats(), &StreamFormat::name));
    };
    command.add_option_function<std::string>("--format", take, "Format of IN, one of those below")
        ->required()
        ->type_name("NAME");
}

void addFrameRateOption(CLI::App& command, std::optional<FrameRate>& rate) {
    const auto take = [&rate](const std::string& text) {
        rate = parseFrameRate(text);
        if (!rate) throw CLI::ValidationError("--frame-rate", "'" + text + "' is no frame rate");
    };
    command
        .add_option_function<std::string>(
            "--frame-rate", take,
            "Pictures a second of video, as 25, 29.97 or 30000/1001; left out: as "
            "the stream says, else 25")
        ->type_name("F");
}

void addParameterSetOption(CLI::App& command, ParameterSetMode& mode) {
    addChoice(
        command, "--parameter-sets", mode,
        {{"sdp", ParameterSetMode::sdp},
         {"rewrite", ParameterSetMode::rewritten},
         {"inband", ParameterSetMode::inBand}},
        "H.264 parameter sets: into the session description as they are (sdp), written anew (rewrite), or "
        "into the stream too, with SEI and delimiters (inband) [sdp]")
        ->type_name("MODE");
}

std::string formatList(bool withPacketizerOnly) {
    std::string list = "Formats:\n";
    for (const StreamFormat& format : streamFormats()) {
        if (format.hasPacketizer || !withPacketizerOnly)
            list += fmt::format("  {:<13} {}\n", format.name, format.description);
    }
    return list;
}

}  // namespace mvrtpfec
