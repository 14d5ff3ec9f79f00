#pragma once

#include <cstdint>
#include <limits>

#include "rtp_media/bits/bit_reader.h"

namespace mvrtpfec {

/// Reads syntax elements (ISO/IEC 14496-10, 7.2) into the fields that they belong to. The functions that walk
/// a syntax structure take this or the writer, so that each structure is told once.
class avcSyntaxReader {
public:
    explicit avcSyntaxReader(BitReader& reader) : reader_(reader) {}

    template <class Field>
    void u(unsigned count, Field& field) {
        field = static_cast<Field>(reader_.bits(count));
    }
    void ue(std::uint32_t& field, std::uint32_t most = std::numeric_limits<std::uint32_t>::max()) {
        field = reader_.unsignedExpGolomb(most);
    }
    void se(std::int32_t& field, std::int32_t least = std::numeric_limits<std::int32_t>::min(),
            std::int32_t most = std::numeric_limits<std::int32_t>::max()) {
        field = reader_.signedExpGolomb();
        if (field < least || field > most) throw BitstreamException("a number is beyond its range");
    }

private:
    BitReader& reader_;
};

}  // namespace mvrtpfec
