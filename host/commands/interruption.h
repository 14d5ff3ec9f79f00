#pragma once

namespace mvrtpfec {

/// Throws std::runtime_error when the process has been asked to end (platform/process/signals.h), so that
/// half-written files are taken away on the way out. Called once for every packet.
void throwIfInterrupted();

}  // namespace mvrtpfec
