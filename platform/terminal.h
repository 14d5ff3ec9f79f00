#pragma once

namespace platform {

/// Makes standard input, output and error carry bytes as they are: on Windows they would change line ends.
/// Before anything has gone through them.
void useBinaryStandardStreams() noexcept;

/// Whether standard error is a terminal that obeys ANSI escape sequences.
bool isErrorTerminal() noexcept;

}  // namespace platform
