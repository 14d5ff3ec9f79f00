#include <cstdio>

#include "platform/process/debug_output.h"

void OutputDebugStringA(const char* text) {
    if (text != nullptr) std::fputs(text, stderr);
}
