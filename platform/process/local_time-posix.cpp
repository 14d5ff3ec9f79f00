#include "platform/process/local_time.h"

namespace platform {

std::tm localTime(std::int64_t seconds) noexcept {
    const auto moment = static_cast<std::time_t>(seconds);
    std::tm local{};
    if (localtime_r(&moment, &local) == nullptr) return {};
    return local;
}

}  // namespace platform
