#pragma once

#include <memory>

#include "core/fec_composer.h"

namespace mvrtpfec {

/// The composers of a sender with two FEC streams. Stream A carries what the one composer of a mode makes, in
/// mode 3 the columns, stream B the rows of mode 3. For each media packet A has its turn before B.
struct Composers {
    std::unique_ptr<CFecComposer> a;
    std::unique_ptr<CFecComposer> b;

    /// None of either in mode 0. Throws what CFecComposer::checkMatrix throws, before any number is drawn.
    static Composers make(FecPacketSink streamA, FecPacketSink streamB, std::int32_t mode,
                          std::int32_t columns, std::int32_t rows);

    /// Takes the four numbers from the runtime's `rand` that a sender draws when it is made and has no use
    /// for; those of its composers come after them in the sequence.
    static void drawUnused();
};

}  // namespace mvrtpfec
