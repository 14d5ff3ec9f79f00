#pragma once

#include <cstdint>
#include <optional>

#include "platform/process/system_figures.h"

namespace mvn::log {

/// Shares of all processors' time between two readings.
class CpuLoad {
public:
    struct Percent {
        std::int64_t process = 0;
        std::int64_t total = 0;
    };

    /// Nothing, and the reference stays, when no time has passed since the last reading.
    std::optional<Percent> update(const platform::SystemFigures& now);

private:
    platform::SystemFigures last_;
};

}  // namespace mvn::log
