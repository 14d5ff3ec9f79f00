#include "host/live/reception_figures.h"

#include <fmt/format.h>

namespace mvrtpfec {

std::uint64_t ReceptionTotals::foreign() const {
    return reception.foreign + tooLong + (repair.guard ? repair.guard->foreign : 0);
}

std::optional<std::string> noMediaText(const ReceptionTotals& totals) {
    if (totals.reception.media > 0 || totals.foreign() == 0) return std::nullopt;
    std::string text = fmt::format("no media come, but {} other datagrams", totals.foreign());
    if (const auto type = totals.reception.foreignPayloadType)
        text += fmt::format(" (RTP of payload type {}, a transport stream has {})", *type, mediaPayloadType);
    return text;
}

std::vector<Counter> countersOf(const ReceptionTotals& totals) {
    const ReceptionFigures& reception = totals.reception;
    const LedgerFigures& stream = totals.repair.stream;
    const GuardFigures guard = totals.repair.guard.value_or(GuardFigures{});
    return {
        {"media_packets", "Media packets received", reception.media},
        {"media_bytes", "Bytes of them, RTP headers included", reception.mediaBytes},
        {"fec_packets", "FEC packets received", reception.fec.packets},
        {"fec_missing_packets", "FEC packets that never came", reception.fec.missing},
        {"lost_packets", "Media packets found missing", stream.lost()},
        {"rebuilt_packets", "Media packets rebuilt", stream.rebuilt},
        {"lost_for_good_packets", "Media packets missing in the output", stream.lostForGood},
        {"delivered_packets", "Media packets given to the output", totals.repair.delivered},
        {"late_packets", "Media packets that came after they were given up", guard.late},
        {"repeated_packets", "Packets that came again", guard.repeated},
        {"fec_kept_back_packets", "FEC packets of no use to the decoder", guard.fecKeptBack},
        {"fec_not_turned_packets", "FEC packets of the other format, left out", totals.notTurned},
        {"foreign_datagrams", "Datagrams that are neither media nor FEC", totals.foreign()},
        {"overrun_datagrams", "Datagrams that the system dropped before they were read", totals.overrun},
        {"refused_datagrams", "Datagrams of the output that the system did not send", totals.refused},
        {"source_restarts", "Times that the source began anew", stream.restarts},
        {"outages", "Times that more than a thousand packets in a row were missing", stream.outages},
        {"decoder_resets", "Decoders replaced, but for losses, restarts and wraps that the guard met",
         totals.repair.resets()},
    };
}

}  // namespace mvrtpfec
