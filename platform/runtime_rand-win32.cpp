#include <cstdlib>

#include "platform/runtime_rand.h"

namespace platform {

int runtimeRand() noexcept {
    return std::rand();
}

}  // namespace platform
