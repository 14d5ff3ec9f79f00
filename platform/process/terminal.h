#pragma once

#include <cstdint>

namespace platform {

/// Makes standard input, output and error carry bytes as they are: on Windows they would change line ends.
/// Before anything has gone through them.
void useBinaryStandardStreams() noexcept;

/// Whether standard error is a terminal that obeys ANSI escape sequences.
bool isErrorTerminal() noexcept;

/// Sets the colour of what standard output shows from here on, as a console text attribute: 12 bright red, 14
/// bright yellow, 10 bright green, 7 grey. Nothing where it is no terminal.
void setTextAttribute(std::uint16_t attribute) noexcept;

/// The colour that it had before.
void resetTextAttribute() noexcept;

}  // namespace platform
