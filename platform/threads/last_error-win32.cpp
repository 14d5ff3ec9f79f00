#include "platform/threads/last_error.h"
#include "platform/threads/sync.h"

namespace platform {

std::error_code lastError() noexcept {
    return {static_cast<int>(GetLastError()), std::system_category()};
}

}  // namespace platform
