#include <cstdio>

#include "platform/debug_output.h"

void OutputDebugStringA(const char* text) {
    if (text != nullptr) std::fputs(text, stderr);
}
