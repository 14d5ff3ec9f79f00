#pragma once

#include "platform/types.h"

#ifndef _WIN32

/// Sends a text to whoever listens for debugger output; here that is the standard error stream. Null is
/// nothing.
extern "C" void OutputDebugStringA(const char* text);

#endif
