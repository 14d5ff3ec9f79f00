#include <atomic>

#include "platform/process/signals.h"
#include "platform/types.h"

namespace platform {

namespace {

std::atomic<bool> interrupted{false};
std::atomic<ULONGLONG> when{0};
HANDLE worker = nullptr;

/// On a thread of the system's. What isn't taken here ends the process.
BOOL WINAPI remember(DWORD event) {
    if (interrupted.exchange(true)) return GetTickCount64() - when < oneEvent ? TRUE : FALSE;
    when = GetTickCount64();
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT && event != CTRL_CLOSE_EVENT) return FALSE;
    CancelSynchronousIo(worker);
    // When the console closes, the process may unwind for as long as this doesn't return, a few seconds at
    // most.
    if (event == CTRL_CLOSE_EVENT) Sleep(INFINITE);
    return TRUE;
}

}  // namespace

void ignoreWriteSignals() noexcept {}

void watchForInterruption() noexcept {
    const HANDLE process = GetCurrentProcess();
    DuplicateHandle(process, GetCurrentThread(), process, &worker, 0, FALSE, DUPLICATE_SAME_ACCESS);
    SetConsoleCtrlHandler(remember, TRUE);
}

bool wasInterrupted() noexcept {
    return interrupted;
}

void ignoreHangUp() noexcept {}

}  // namespace platform
