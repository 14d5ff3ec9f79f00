#pragma once
// The component model's task memory, which one side of an interface takes and the other gives back.

#include "platform/types.h"

#ifdef _WIN32

#include <objbase.h>

#else

#include <cstddef>

extern "C" {

/// Null when there is none left.
LPVOID CoTaskMemAlloc(std::size_t size);
LPVOID CoTaskMemRealloc(LPVOID block, std::size_t size);
void CoTaskMemFree(LPVOID block);

}  // extern "C"

#endif
