#pragma once

#include <array>

#include "platform/types.h"

namespace mvrtpfec {

// The records stored as metadata of a sample. What stands inside is agreed between those who write and
// those who read them; here they are stored and copied only.

struct CuePoint {
    std::array<BYTE, 24> bytes;

    bool operator==(const CuePoint&) const = default;
};
static_assert(sizeof(CuePoint) == 24);

struct SampleDate {
    LONGLONG value;

    bool operator==(const SampleDate&) const = default;
};
static_assert(sizeof(SampleDate) == 8);

struct DolbyMetadata {
    std::array<BYTE, 84> bytes;

    bool operator==(const DolbyMetadata&) const = default;
};
static_assert(sizeof(DolbyMetadata) == 84);

struct ParentalRating {
    std::array<BYTE, 5144> bytes;

    bool operator==(const ParentalRating&) const = default;
};
static_assert(sizeof(ParentalRating) == 5144);

}  // namespace mvrtpfec
