#include <chrono>
#include <thread>

#include "platform/threads/sync.h"

DWORD GetTickCount() {
    using std::chrono::milliseconds;
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<DWORD>(std::chrono::duration_cast<milliseconds>(now).count());
}

void Sleep(DWORD milliseconds) {
    if (milliseconds == 0) return std::this_thread::yield();
    do std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    while (milliseconds == INFINITE);
}
