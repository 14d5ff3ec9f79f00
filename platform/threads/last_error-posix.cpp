#include <string>

#include "platform/threads/last_error.h"
#include "platform/threads/sync.h"

namespace {

constinit thread_local DWORD lastErrorNumber = ERROR_SUCCESS;

/// Windows' numbers, which aren't those of errno.
class LastErrorCategory final : public std::error_category {
public:
    const char* name() const noexcept override { return "last error"; }

    std::string message(int number) const override {
        switch (static_cast<DWORD>(number)) {
            case ERROR_INVALID_HANDLE:
                return "Invalid handle";
            case ERROR_NOT_ENOUGH_MEMORY:
                return "Not enough memory, or too many threads";
            case ERROR_INVALID_PARAMETER:
                return "Invalid parameter";
            default:
                return "Win32 error " + std::to_string(number);
        }
    }
};

}  // namespace

DWORD GetLastError() {
    return lastErrorNumber;
}

void SetLastError(DWORD error) {
    lastErrorNumber = error;
}

namespace platform {

std::error_code lastError() noexcept {
    static const LastErrorCategory category;
    return {static_cast<int>(GetLastError()), category};
}

}  // namespace platform
