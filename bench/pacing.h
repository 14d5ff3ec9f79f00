#pragma once

namespace mvrtpfec::bench {

/// Sends 20 Mbit/s through the scheduler to a socket of this machine for three seconds and prints how the
/// packets' distances and the bursts that they make are distributed. Throws std::system_error when there are
/// no sockets.
void printPacing();

}  // namespace mvrtpfec::bench
