#pragma once

#include <chrono>
#include <mutex>
#include <string_view>

// Any thread may tell something. Nobody who reads it, or can any more, is no error; one who has stopped
// reading is waited for as long as `patience` says.

namespace mvrtpfec {

/// Tells a person something, below the status line if one is shown.
void tellPerson(std::string_view text,
                std::chrono::milliseconds patience = std::chrono::milliseconds(2000)) noexcept;

/// Shows a line in place of the one shown before. Only where standard error is a terminal
/// (platform::isErrorTerminal), which cuts it if it is too narrow: a second line couldn't be replaced.
void showStatus(std::string_view text,
                std::chrono::milliseconds patience = std::chrono::milliseconds(0)) noexcept;
/// Takes it away.
void clearStatus() noexcept;
/// Lets it stand; what is told next is below.
void endStatus() noexcept;

/// For who writes to standard error without tellPerson: ends the status line and keeps others out meanwhile.
std::unique_lock<std::timed_mutex> claimStandardError();

}  // namespace mvrtpfec
