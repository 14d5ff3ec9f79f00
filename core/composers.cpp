#include "core/composers.h"

#include <utility>

#include "platform/process/runtime_rand.h"

namespace mvrtpfec {

Composers Composers::make(FecPacketSink streamA, FecPacketSink streamB, std::int32_t mode,
                          std::int32_t columns, std::int32_t rows) {
    if (mode == fecNone) return {};
    CFecComposer::checkMatrix(mode, columns, rows);
    Composers made;
    made.a = std::make_unique<CFecComposer>(std::move(streamA), mode == fecRow ? fecRow : fecColumn, columns,
                                            rows);
    if (mode == fecBoth) made.b = std::make_unique<CFecComposer>(std::move(streamB), fecRow, columns, rows);
    return made;
}

void Composers::drawUnused() {
    for (int draw = 0; draw < 4; ++draw) platform::runtimeRand();
}

}  // namespace mvrtpfec
