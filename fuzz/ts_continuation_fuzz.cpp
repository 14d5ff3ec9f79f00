// Transport packets of a file that is played twice: the first play stays as it is, and in the second the
// times differ by the shift alone. Input: packets of 188 bytes.

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "host/io/pes_times.h"
#include "host/live/ts_continuation.h"

using namespace mvrtpfec;

namespace {

constexpr std::uint64_t shift = 123'456'789;

bool isShifted(const std::optional<PesTime>& before, const std::optional<PesTime>& after) {
    return before.has_value() == after.has_value() &&
           (!before || (before->ticks() + shift) % pesTimeModulus == after->ticks());
}

void hold(bool condition) {
    if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    TsContinuation continuation;
    for (const bool isFirst : {true, false}) {
        for (std::size_t at = 0; at + tsPacketSize <= size; at += tsPacketSize) {
            TsPacket before;
            std::copy_n(data + at, tsPacketSize, before.bytes.begin());
            TsPacket after = before;
            continuation.apply(after);
            hold(!isFirst || after.bytes == before.bytes);
            if (isFirst || before.isDamaged() || before.pid() == nullPid) continue;
            const PesTimes timesBefore = pesTimes(before);
            const PesTimes timesAfter = pesTimes(after);
            hold(isShifted(timesBefore.presentation, timesAfter.presentation));
            hold(isShifted(timesBefore.decoding, timesAfter.decoding));
            const auto pcrBefore = before.pcr();
            const auto pcrAfter = after.pcr();
            hold(pcrBefore.has_value() == pcrAfter.has_value());
            hold(!pcrBefore || (pcrBefore->ticks + shift * 300) % pcrModulus == pcrAfter->ticks);
        }
        hold(continuation.length() < 2 * pesTimeModulus);
        continuation.begin(shift);
    }
    return 0;
}
