#include "engine/fec_sender.h"

#include <utility>

namespace mvrtpfec {

FecSender::FecSender(const Output& output, std::int32_t mode, std::int32_t columns, std::int32_t rows) {
    const auto sinkOf = [&output](FecStream stream) {
        return [output, stream](std::shared_ptr<RtpPacket> fec) { output(stream, std::move(fec)); };
    };
    Composers::drawUnused();
    composers_ = Composers::make(sinkOf(FecStream::a), sinkOf(FecStream::b), mode, columns, rows);
}

void FecSender::push(ConstRtpPacketView media) {
    if (composers_.a) composers_.a->protect(media);
    if (composers_.b) composers_.b->protect(media);
}

}  // namespace mvrtpfec
