#pragma once

#include <cstdint>

#include "host/commands/report.h"
#include "host/media/sample_source.h"
#include "host/media/unit_counter.h"
#include "rtp_media/chain/nal_builder.h"

namespace mvrtpfec {

/// Drives the whole file through the parser, flush included, with a progress bar. Returns how many samples
/// the parser refused. Throws FileError, and std::runtime_error when interrupted.
std::uint64_t feed(SampleSource& samples, NALBuilder& parser);

nlohmann::ordered_json toJson(const UnitFigures& figures, std::uint64_t refused);
void addRows(Table& table, const UnitFigures& figures, std::uint64_t refused);
/// Seconds to the millisecond.
std::string secondsText(double seconds);

}  // namespace mvrtpfec
