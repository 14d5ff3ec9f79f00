#pragma once

#include "bench/targets.h"

namespace mvrtpfec::bench {

/// Lets the program send and receive on this machine, GStreamer's SMPTE 2022-1 elements the same where they
/// are installed, and adds the CPU nanoseconds that each spends on a media packet; and how many datagrams are
/// lost at the sockets at 1 Gbit/s. About a minute.
void measureLive(Measurements& measured);

}  // namespace mvrtpfec::bench
