#include "platform/process/local_time.h"

namespace platform {

std::tm localTime(std::int64_t seconds) noexcept {
    const __time64_t moment = seconds;
    std::tm local{};
    if (_localtime64_s(&local, &moment) != 0) return {};
    return local;
}

}  // namespace platform
