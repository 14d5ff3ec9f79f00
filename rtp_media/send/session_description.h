#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "rtp_media/send/rtp_stream.h"

namespace mvrtpfec {

/// What the session level of the description says.
struct SessionNames {
    std::string originUserName;
    std::string originAddress;
    std::string sessionName;
    std::optional<std::string> sessionTitle;  ///< in place of sessionName when set
    std::string connectionAddress;
};

using RTPStreams = std::map<std::uint32_t, std::unique_ptr<RTPStream>>;

/// The session description (RFC 4566) of the streams in the order of their ids, each line with a backslash
/// for its end; none while a packetizer's attributes aren't complete. `wallTime` gives ms since 1970.
std::optional<std::string> sessionDescription(const SessionNames& names, const RTPStreams& streams,
                                              const WallClock& wallTime);

}  // namespace mvrtpfec
