#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace mvrtpfec {

/// Scaling lists as their deltas are coded (ISO/IEC 14496-10, 7.3.2.1.1.1): six of 16 numbers, up to six
/// of 64.
struct AvcScalingLists {
    static constexpr std::size_t smallLists = 6;
    static constexpr std::size_t mostLists = 12;

    std::array<bool, mostLists> present{};
    std::array<std::array<std::int32_t, 64>, mostLists> deltas{};
};

template <class Syntax, class Deltas>
void scalingListSyntax(Syntax& syntax, Deltas& deltas, std::size_t size) {
    std::int32_t last = 8;
    for (std::size_t i = 0; i < size; ++i) {
        syntax.se(deltas[i], -128, 127);
        const std::int32_t next = (last + deltas[i] + 256) % 256;
        if (next == 0) return;  // the rest repeats the last
        last = next;
    }
}

template <class Syntax, class Lists>
void scalingListsSyntax(Syntax& syntax, Lists& lists, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        syntax.u(1, lists.present[i]);
        if (lists.present[i])
            scalingListSyntax(syntax, lists.deltas[i], i < AvcScalingLists::smallLists ? 16 : 64);
    }
}

}  // namespace mvrtpfec
