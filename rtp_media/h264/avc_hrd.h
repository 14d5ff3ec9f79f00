#pragma once

#include <cstdint>
#include <type_traits>
#include <vector>

namespace mvrtpfec {

/// Parameters of the hypothetical reference decoder (ISO/IEC 14496-10, E.1.2).
struct AvcHrd {
    struct Cpb {
        std::uint32_t bitRateValueMinus1 = 0;
        std::uint32_t cpbSizeValueMinus1 = 0;
        bool cbr = false;
    };
    static constexpr std::uint32_t mostCpbsMinus1 = 31;

    std::uint32_t cpbCountMinus1 = 0;
    std::uint8_t bitRateScale = 0;
    std::uint8_t cpbSizeScale = 0;
    std::vector<Cpb> cpbs;
    // Lengths in bits of numbers in SEI messages; the first three less one.
    std::uint8_t initialRemovalDelayLengthMinus1 = 0;
    std::uint8_t removalDelayLengthMinus1 = 0;
    std::uint8_t outputDelayLengthMinus1 = 0;
    std::uint8_t timeOffsetLength = 0;

    /// Of the first buffer, in bits per second (E.2.2).
    std::uint64_t bitRate() const {
        return cpbs.empty() ? 0 : (std::uint64_t{cpbs[0].bitRateValueMinus1} + 1) << (bitRateScale + 6);
    }
};

template <class Syntax, class Hrd>
void hrdSyntax(Syntax& syntax, Hrd& hrd) {
    syntax.ue(hrd.cpbCountMinus1, AvcHrd::mostCpbsMinus1);
    syntax.u(4, hrd.bitRateScale);
    syntax.u(4, hrd.cpbSizeScale);
    if constexpr (!std::is_const_v<Hrd>) hrd.cpbs.resize(hrd.cpbCountMinus1 + 1);
    for (auto& cpb : hrd.cpbs) {
        syntax.ue(cpb.bitRateValueMinus1);
        syntax.ue(cpb.cpbSizeValueMinus1);
        syntax.u(1, cpb.cbr);
    }
    syntax.u(5, hrd.initialRemovalDelayLengthMinus1);
    syntax.u(5, hrd.removalDelayLengthMinus1);
    syntax.u(5, hrd.outputDelayLengthMinus1);
    syntax.u(5, hrd.timeOffsetLength);
}

}  // namespace mvrtpfec
