#pragma once

#include <array>
#include <cstddef>

#include "platform/wide_literal.h"

namespace mvrtpfec {

/// Names of the pins of the host's own filters, which have three of a direction at most.
inline LPCWSTR inputPinName(std::size_t index) {
    using platform::operator""_w;
    return std::array<LPCWSTR, 3>{"Input 1"_w, "Input 2"_w, "Input 3"_w}.at(index);
}

inline LPCWSTR outputPinName(std::size_t index) {
    using platform::operator""_w;
    return std::array<LPCWSTR, 3>{"Output 1"_w, "Output 2"_w, "Output 3"_w}.at(index);
}

}  // namespace mvrtpfec
