#include "platform/threads/blocked_threads.h"

namespace platform {

std::string blockedThreads() {
    return {};
}

}  // namespace platform
