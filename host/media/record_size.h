#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "rtp_media/chain/stream_type.h"

namespace mvrtpfec {

/// How long the record is that begins with these bytes, as far as they show it.
struct RecordSize {
    /// 0: it isn't told yet; then so many bytes are asked for, at least one more than there are.
    std::size_t size = 0;
    std::size_t wanted = 0;
};

/// Whether units of this format end with their samples, which a file has no trace of.
bool isCutIntoRecords(StreamType type);

/// The record that `bytes` begin with, one unit of a format that is cut into records:
/// SCTE 35: 8 bytes and a splice_info_section (ANSI/SCTE 35, 9.6). KLV: key, BER length and value (SMPTE
/// ST 336). TTML: a document, up to its </tt>. WebVTT: a block with the blank lines behind it. DVB subtitle:
/// a PES_data_field (ETSI EN 300 743, 7.1). Teletext: a PES_data_field (ETSI EN 300 472, 4.2). Other types:
/// all there is. Raw AAC: an AacRawRecord, or the bytes before what may be the next one. The last record of a
/// file may lack its end. Throws std::runtime_error for what begins no record.
RecordSize recordSize(StreamType type, std::span<const std::uint8_t> bytes);

}  // namespace mvrtpfec
