#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "rtp_media/bits/bit_set.h"

namespace mvrtpfec {

/// Writes syntax elements (ISO/IEC 14496-10, 7.2); the counterpart of avcSyntaxReader.
class avcSyntaxWriter {
public:
    template <class Field>
    void u(unsigned count, const Field& field) {
        bits_.append(static_cast<std::uint32_t>(field), count);
    }
    void ue(std::uint32_t field, std::uint32_t = 0);
    void se(std::int32_t field, std::int32_t = 0, std::int32_t = 0);

    /// What was written, with the stop bit and zeros up to a byte (7.3.2.11).
    std::vector<std::uint8_t> finish();

private:
    void writeCode(std::uint64_t codePlusOne);

    Bit_Set bits_;
};

}  // namespace mvrtpfec
