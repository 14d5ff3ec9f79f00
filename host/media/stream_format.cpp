#include "host/media/stream_format.h"

#include <algorithm>
#include <array>

namespace mvrtpfec {

namespace {

constexpr std::array formats{
    StreamFormat{"h264", StreamType::h264, true, "H.264 byte stream"},
    StreamFormat{"h263", StreamType::h263, true, "H.263"},
    StreamFormat{"mpeg4", StreamType::mpeg4Visual, true, "MPEG-4 Visual"},
    StreamFormat{"mpeg2ts", StreamType::mpeg2ts, true, "MPEG-2 transport stream"},
    StreamFormat{"aac-adts", StreamType::aacAdts, true, "AAC with ADTS headers"},
    StreamFormat{"aac-latm", StreamType::aacLatm, true, "AAC in LATM with LOAS headers"},
    StreamFormat{"aac-raw", StreamType::aacRaw, true, "AAC in records with their configuration"},
    StreamFormat{"hevc", StreamType::hevc, false, "HEVC byte stream"},
    StreamFormat{"mpeg2", StreamType::mpeg2Video, false, "MPEG-1 and MPEG-2 video"},
    StreamFormat{"prores", StreamType::proRes, false, "ProRes frames"},
    StreamFormat{"mpeg1-audio", StreamType::mpeg1Audio, false, "MPEG-1 audio, layers I to III"},
    StreamFormat{"ac3", StreamType::ac3, false, "AC-3 and E-AC-3"},
    StreamFormat{"scte35", StreamType::scte35, false, "SCTE 35 sections, 8 bytes before each"},
    StreamFormat{"klv", StreamType::klv, false, "SMPTE 336 key, length and value"},
    StreamFormat{"ttml", StreamType::ttml, false, "TTML documents"},
    StreamFormat{"webvtt", StreamType::webVtt, false, "WebVTT"},
    StreamFormat{"dvb-subtitle", StreamType::dvbSubtitle, false, "DVB subtitle PES data fields"},
    StreamFormat{"teletext", StreamType::teletext, false, "EBU teletext PES data fields"},
    StreamFormat{"sync22", StreamType::syncPoint22, false, "stream type 22, a unit a file"},
    StreamFormat{"sync23", StreamType::syncPoint23, false, "stream type 23, a unit a file"},
    StreamFormat{"sync24", StreamType::syncPoint24, false, "stream type 24, a unit a file"},
};

}  // namespace

std::span<const StreamFormat> streamFormats() {
    return formats;
}

const StreamFormat* findStreamFormat(std::string_view name) {
    const auto* const found = std::ranges::find(formats, name, &StreamFormat::name);
    return found == formats.end() ? nullptr : found;
}

}  // namespace mvrtpfec
