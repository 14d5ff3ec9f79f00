#include "host/media/no_packet_reason.h"

#include <vector>

#include "rtp_media/bits/bit_reader.h"
#include "rtp_media/bits/emulation_prevention.h"
#include "rtp_media/bits/start_code_search.h"
#include "rtp_media/h264/avc_sps.h"

namespace mvrtpfec {

namespace {

bool hasTiming(std::span<const std::uint8_t> body) {
    std::vector<std::uint8_t> rbsp;
    removeEmulationPrevention(body, rbsp);
    try {
        return parseAvcSps(rbsp).hasTiming();
    } catch (const BitstreamException&) {
        return false;
    }
}

}  // namespace

void NoPacketReason::look(const NAL& unit) {
    constexpr unsigned typeSps = 7;
    if (unit.streamType() != StreamType::h264) return;
    const std::size_t header = findStartCode(unit.bytes()) + 3;
    if (header >= unit.size()) return;
    const unsigned type = unit.bytes()[header] & 0x1FU;
    if (type == 1 || type == 5) slices_ = true;
    if (type != typeSps || timing_) return;
    sps_ = true;
    timing_ = hasTiming(unit.bytes().subspan(header + 1));
}

std::string NoPacketReason::text(StreamType type, const UnitFigures& figures) const {
    if (figures.units == 0) return "no unit of this format found";
    switch (type) {
        case StreamType::h264:
            return h264Text();
        case StreamType::aacAdts:
            return "no frame with one data block and a sample rate";
        case StreamType::aacLatm:
            return "no frame with a supported StreamMuxConfig";
        case StreamType::aacRaw:
            return "no frame with a supported configuration";
        case StreamType::h263:
            return "no picture of a standard source format";
        case StreamType::mpeg4Visual:
            return "no video object plane found";
        default:
            return "none of its units can be sent";
    }
}

std::string NoPacketReason::h264Text() const {
    if (!slices_) return "no slices found";
    if (!sps_) return "no sequence parameter set found";
    if (!timing_)
        return "its sequence parameter sets have no VUI timing, without which no picture is sent (a frame "
               "rate "
               "given makes no difference)";
    return "no slice follows its parameter sets";
}

std::string NoPacketReason::sessionText(StreamType type) {
    switch (type) {
        case StreamType::h264:
            return "the stream has no picture parameter set to describe it by";
        case StreamType::mpeg4Visual:
            return "the stream has no visual object sequence header to describe it by";
        default:
            return "the stream has nothing to describe it by";
    }
}

}  // namespace mvrtpfec
