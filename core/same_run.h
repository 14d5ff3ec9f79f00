#pragma once

namespace mvrtpfec {

/// Sequence numbers further apart are of different runs of a source.
inline constexpr int sameRun = 1024;

}  // namespace mvrtpfec
