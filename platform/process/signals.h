#pragma once

// What users and the system send a process to end it.

namespace platform {

/// Makes this process see a closed pipe and a file size limit as errors of the write, not as a signal that
/// ends it.
void ignoreWriteSignals() noexcept;

/// From here on SIGINT and SIGTERM, on Windows Ctrl-C, Ctrl-Break and the closing of the console, are
/// remembered; a second one ends the process at once, unless it is of the same moment: some programs that end
/// others tell both a process and its group. A read or write that waits at that moment fails.
/// The thread that calls is the one that reads and writes.
void watchForInterruption() noexcept;

/// Milliseconds within which two are one.
inline constexpr int oneEvent = 250;

/// Whether one has come. Any thread.
bool wasInterrupted() noexcept;

/// A terminal that goes away is no reason to end.
void ignoreHangUp() noexcept;

}  // namespace platform
