#pragma once

#include <chrono>
#include <cstdint>

#include "host/io/frame_template.h"

namespace mvrtpfec {

/// Where the host stood when it pushed a packet: what the packets set free by it are written with.
struct Moment {
    std::chrono::nanoseconds time{0};              ///< of the datagram, as Datagram::time
    FrameTemplate addressing{LinkType::ethernet};  ///< of the source's stream
    std::uint64_t arrivals = 0;                    ///< media packets that had come by then
};

}  // namespace mvrtpfec
