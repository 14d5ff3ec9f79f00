#pragma once

#include <optional>

#include "host/media/frame_rate.h"
#include "host/media/stream_format.h"
#include "rtp_media/chain/rtp_packet_builder.h"

namespace CLI {
class App;
}

namespace mvrtpfec {

// Options of the commands that read elementary streams.

void addFormatOption(CLI::App& command, const StreamFormat*& format);
void addFrameRateOption(CLI::App& command, std::optional<FrameRate>& rate);
void addParameterSetOption(CLI::App& command, ParameterSetMode& mode);
/// The names and what they stand for, a line each.
std::string formatList(bool withPacketizerOnly);

}  // namespace mvrtpfec
