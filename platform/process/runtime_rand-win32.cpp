#include <cstdlib>

#include "platform/process/runtime_rand.h"

namespace platform {

int runtimeRand() noexcept {
    return std::rand();
}

}  // namespace platform
