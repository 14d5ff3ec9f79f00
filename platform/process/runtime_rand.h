#pragma once

namespace platform {

/// The Windows runtime library's `rand`: 0 to 32767, unseeded, its state per thread and starting at 1,
/// so that a run draws the same numbers (41, 18467, 6334, ...) on every target.
int runtimeRand() noexcept;

}  // namespace platform
