#pragma once

#include <cstdint>

#include "core/fec_composer.h"

namespace mvrtpfec {

/// What the sender filter is configured with.
struct MatrixConfig {
    FecMode mode = fecBoth;
    std::int32_t columns = 10;
    std::int32_t rows = 10;
};

}  // namespace mvrtpfec
