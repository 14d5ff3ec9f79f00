#include "guard/fec_gate.h"

#include <algorithm>

namespace mvrtpfec {

namespace {

constexpr int lastNumber = 65535;
constexpr int farAhead = 1024;
constexpr int halfCycle = 32768;

bool isUsable(const ProtectedRange& range, std::optional<std::uint16_t> position) {
    if (range.offset == 0 || range.count == 0 || range.base > range.last) return false;
    // At 65535 every group ends before the wrap, too late, or begins behind it, too early.
    if (!position || *position == lastNumber) return false;
    const int ahead = range.base - *position;
    return ahead <= farAhead && ahead > -halfCycle;
}

}  // namespace

FecGate::Verdict FecGate::judge(ConstRtpPacketView fec, std::optional<std::uint16_t> position) {
    const ProtectedRange range = protectedRange(fec);
    if (!isUsable(range, position)) return Verdict::keptBack;

    Stream& stream = streamOf(fecKind(fec));
    const std::uint32_t identity = std::uint32_t{fec.sequenceNumber()} << 16 | range.base;
    if (isRepeated(stream, identity)) return Verdict::repeated;
    stream.recent[stream.recentCount++ % remembered] = identity;
    return Verdict::pass;
}

bool FecGate::isRepeated(const Stream& stream, std::uint32_t identity) const {
    const auto end =
        stream.recent.begin() + static_cast<std::ptrdiff_t>(std::min(stream.recentCount, remembered));
    return std::find(stream.recent.begin(), end, identity) != end;
}

void FecGate::renumber(RtpPacket& fec, FecKind kind) {
    writeBigEndian16(fec.view.data + 2, streamOf(kind).nextNumber++);
}

}  // namespace mvrtpfec
