#include "support/log/cpu_load.h"

namespace mvn::log {

namespace {

std::int64_t difference(std::uint64_t now, std::uint64_t before) {
    return static_cast<std::int64_t>(now - before);
}

}  // namespace

std::optional<CpuLoad::Percent> CpuLoad::update(const platform::SystemFigures& now) {
    const std::int64_t total = difference(now.kernelTime + now.userTime, last_.kernelTime + last_.userTime);
    if (total == 0) return std::nullopt;
    const std::int64_t idle = difference(now.idleTime, last_.idleTime);
    const std::int64_t process = difference(now.processKernelTime + now.processUserTime,
                                            last_.processKernelTime + last_.processUserTime);
    last_ = now;
    return Percent{process * 100 / total, (total - idle) * 100 / total};
}

}  // namespace mvn::log
