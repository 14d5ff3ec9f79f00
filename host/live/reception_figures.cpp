#include "host/live/reception_figures.h"

#include <fmt/format.h>

namespace mvrtpfec {

std::string matrixText(const ReceptionFigures& reception) {
    if (reception.columns == 0) return "no FEC yet";
    if (reception.rows == 0) return fmt::format("L {}", reception.columns);
    return fmt::format("{} x {}", reception.columns, reception.rows);
}

std::vector<Counter> countersOf(const ReceptionTotals& totals) {
    const ReceptionFigures& reception = totals.reception;
    const RtpFecInTotals& receiver = totals.repair.receiver;
    const GuardFigures guard = totals.repair.guard.value_or(GuardFigures{});
    return {
        {"media_packets", "Media packets received", reception.media},
        {"media_bytes", "Bytes of them, RTP headers included", reception.mediaBytes},
        {"fec_packets", "FEC packets received", reception.fec},
        {"fec_missing_packets", "FEC packets that never came", reception.fecMissing},
        {"lost_packets", "Media packets found missing", receiver.lost},
        {"rebuilt_packets", "Media packets rebuilt", receiver.rebuilt},
        {"lost_for_good_packets", "Media packets missing in the output", totals.lostForGood},
        {"delivered_packets", "Media packets given to the output", totals.repair.delivered},
        {"late_packets", "Media packets that came after they were given up", guard.late},
        {"repeated_packets", "Packets that came again", guard.repeated},
        {"fec_kept_back_packets", "FEC packets of no use to the decoder", guard.fecKeptBack},
        {"fec_not_turned_packets", "FEC packets of the other format, left out", totals.notTurned},
        {"foreign_datagrams", "Datagrams that are neither media nor FEC",
         reception.foreign + guard.foreign + totals.tooLong},
        {"overrun_datagrams", "Datagrams that the system dropped before they were read", totals.overrun},
        {"refused_datagrams", "Datagrams of the output that the system did not send", totals.refused},
        {"source_restarts", "Times that the source began anew", totals.restarts()},
        {"decoder_resets", "Decoders replaced", receiver.resets},
    };
}

}  // namespace mvrtpfec
