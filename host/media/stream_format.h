#pragma once

#include <span>
#include <string_view>

#include "rtp_media/chain/stream_type.h"

namespace mvrtpfec {

/// A format of elementary stream as the command line names it.
struct StreamFormat {
    std::string_view name;
    StreamType type;
    bool hasPacketizer;
    std::string_view description;
};

/// All of them, each with a parser.
std::span<const StreamFormat> streamFormats();

/// Null for a name that none bears.
const StreamFormat* findStreamFormat(std::string_view name);

}  // namespace mvrtpfec
