#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "platform/debug_output.h"
#include "platform/sync.h"
#include "platform/task_memory.h"

namespace {

thread_local DWORD lastError = ERROR_SUCCESS;

}  // namespace

extern "C" {

DWORD GetLastError() {
    return lastError;
}

void SetLastError(DWORD error) {
    lastError = error;
}

DWORD GetTickCount() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<DWORD>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

void Sleep(DWORD milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

LPVOID CoTaskMemAlloc(std::size_t size) {
    return std::malloc(size == 0 ? 1 : size);
}

LPVOID CoTaskMemRealloc(LPVOID block, std::size_t size) {
    return std::realloc(block, size);
}

void CoTaskMemFree(LPVOID block) {
    std::free(block);
}

void OutputDebugStringA(const char* text) {
    if (text != nullptr) std::fputs(text, stderr);
}

}  // extern "C"
