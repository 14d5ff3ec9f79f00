#pragma once

namespace mvrtpfec {

/// From here on SIGINT and SIGTERM are remembered; a second one ends the process at once.
void watchForInterruption();

/// Throws std::runtime_error after such a signal, so that half-written files are taken away on the way
/// out. Called once for every packet.
void throwIfInterrupted();

}  // namespace mvrtpfec
