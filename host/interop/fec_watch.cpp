#include "host/interop/fec_watch.h"

#include <algorithm>

#include <fmt/format.h>

#include "core/same_run.h"
#include "core/serial_distance.h"

namespace mvrtpfec {

namespace {

/// The fields that are 0 in every FEC packet, and those that never are.
bool isFec(ConstRtpPacketView packet) {
    using namespace fec_header;
    const std::uint8_t* bytes = packet.data;
    const bool isMasked =
        std::any_of(bytes + mask, bytes + timestampRecovery, [](auto byte) { return byte != 0; });
    return !isMasked && (bytes[direction] & ~rowFlag) == 0 && bytes[snBaseExtension] == 0 &&
           bytes[offset] != 0 && bytes[protectedCount] != 0;
}

}  // namespace

std::string matrixText(const FecFigures& fec) {
    if (fec.columns == 0) return "no FEC yet";
    if (fec.rows == 0) return fmt::format("L {}", fec.columns);
    return fmt::format("{} x {}", fec.columns, fec.rows);
}

std::string_view modeText(const FecFigures& fec) {
    if (fec.hasColumnFec) return fec.hasRowFec ? "both" : "column";
    return fec.hasRowFec ? "row" : "none";
}

bool FecWatch::note(ConstRtpPacketView packet) {
    if (!isFec(packet)) return false;
    ++figures_.packets;
    const FecKind kind = fecKind(packet);
    (kind == FecKind::column ? figures_.hasColumnFec : figures_.hasRowFec) = true;
    learnMatrix(kind, protectedRange(packet));
    countMissing(kind, packet.sequenceNumber());
    return true;
}

void FecWatch::learnMatrix(FecKind kind, const ProtectedRange& range) {
    if (kind == FecKind::column) {
        figures_.columns = range.offset;
        figures_.rows = range.count;
        rowsAlone_ = 0;
    } else if (++rowsAlone_ > 2 * figures_.rows) {
        // Two matrices without a column FEC packet: there are none, or none yet.
        figures_.columns = range.count;
        figures_.rows = 0;
    }
}

void FecWatch::countMissing(FecKind kind, std::uint16_t number) {
    auto& next = next_[static_cast<std::size_t>(kind)];
    const int ahead = next ? serialDistance(*next, number) : 0;
    if (ahead > 0 && ahead <= sameRun) figures_.missing += static_cast<std::uint64_t>(ahead);
    if (ahead >= 0 || ahead < -sameRun) next = static_cast<std::uint16_t>(number + 1);
}

}  // namespace mvrtpfec
