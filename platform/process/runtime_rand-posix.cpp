#include <cstdint>

#include "platform/process/runtime_rand.h"

namespace platform {

int runtimeRand() noexcept {
    thread_local std::uint32_t state = 1;
    state = state * 214013u + 2531011u;
    return static_cast<int>((state >> 16) & 0x7fffu);
}

}  // namespace platform
