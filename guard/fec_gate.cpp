#include "guard/fec_gate.h"

#include <algorithm>

namespace mvrtpfec {

namespace {

constexpr int cycle = 65536;
constexpr int farAhead = 1024;
constexpr int halfCycle = 32768;

}  // namespace

FecGate::Verdict FecGate::place(const ProtectedRange& range, std::optional<std::uint16_t> position) {
    if (range.offset == 0 || range.count == 0 || range.base > range.last || !position)
        return Verdict::keptBack;
    const int ahead = range.base - *position;
    if (ahead + cycle <= farAhead) return Verdict::early;
    return ahead <= farAhead && ahead > -halfCycle ? Verdict::pass : Verdict::keptBack;
}

FecGate::Verdict FecGate::judge(ConstRtpPacketView fec, std::optional<std::uint16_t> position) {
    const ProtectedRange range = protectedRange(fec);
    const Verdict verdict = place(range, position);
    if (verdict == Verdict::keptBack) return verdict;

    Stream& stream = streamOf(fecKind(fec));
    const std::uint32_t identity = std::uint32_t{fec.sequenceNumber()} << 16 | range.base;
    if (isRepeated(stream, identity)) return Verdict::repeated;
    stream.recent[stream.recentCount++ % remembered] = identity;
    return verdict;
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
