#pragma once

#include <array>
#include <string_view>

#include "host/graph/matrix_config.h"

namespace mvrtpfec {

/// A matrix with a name that says what it is for.
struct MatrixPreset {
    std::string_view name;
    MatrixConfig matrix;
};

inline constexpr std::array<MatrixPreset, 4> matrixPresets{{{"low-delay", {fecBoth, 5, 5}},
                                                            {"balanced", {fecBoth, 10, 10}},
                                                            {"long-bursts", {fecBoth, 20, 5}},
                                                            {"lean", {fecColumn, 10, 10}}}};

}  // namespace mvrtpfec
