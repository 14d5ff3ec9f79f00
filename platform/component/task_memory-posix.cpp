#include <algorithm>
#include <cstdlib>

#include "platform/component/task_memory.h"

// An empty block has an address of its own.

LPVOID CoTaskMemAlloc(std::size_t size) {
    return std::malloc(std::max<std::size_t>(size, 1));
}

LPVOID CoTaskMemRealloc(LPVOID block, std::size_t size) {
    if (block == nullptr) return CoTaskMemAlloc(size);
    if (size > 0) return std::realloc(block, size);  // NOLINT(cppcoreguidelines-owning-memory)
    std::free(block);
    return nullptr;
}

void CoTaskMemFree(LPVOID block) {
    std::free(block);
}
