#include "bench/arrivals.h"

#include <algorithm>
#include <memory>
#include <random>

#include "bench/packet_ring.h"
#include "core/fec_composer.h"

namespace mvrtpfec::bench {

namespace {

bool isLost(Loss loss, std::size_t index, std::mt19937& random) {
    switch (loss) {
        case Loss::none:
            return false;
        case Loss::onePercent:
            return random() % 100 < 1;
        case Loss::fivePercent:
            return random() % 100 < 5;
        case Loss::bursts:
            return index % 100 < 10;
    }
    return false;
}

}  // namespace

Arrivals::Arrivals(std::int32_t columns, std::int32_t rows, Loss loss, std::size_t ring) {
    PacketRing media(ring);
    std::mt19937 random(7);
    const auto window = static_cast<std::size_t>(2 * columns * rows);
    mediaCount_ = std::max(media.count(), 10 * window);
    counts_[0] = static_cast<std::uint16_t>(mediaCount_);
    const auto addTo = [this](Stream stream) {
        return [this, stream](const std::shared_ptr<RtpPacket>& fec) {
            ++counts_[static_cast<std::size_t>(stream)];
            add(fec->view, stream);
        };
    };
    CFecComposer columnFec(addTo(Stream::columnFec), fecColumn, columns, rows);
    CFecComposer rowFec(addTo(Stream::rowFec), fecRow, columns, rows);
    for (std::size_t i = 0; i < mediaCount_; ++i) {
        const RtpPacketView packet = media.next();
        writeBigEndian16(packet.data + 2, static_cast<std::uint16_t>(i));
        if (!isLost(loss, i, random)) add(packet, Stream::media);
        columnFec.protect(packet);
        rowFec.protect(packet);
    }
}

void Arrivals::add(ConstRtpPacketView packet, Stream stream) {
    packets_.push_back({bytes_.size(), packet.length, stream});
    bytes_.insert(bytes_.end(), packet.data, packet.data + packet.length);
}

void Arrivals::advance(const Packet& packet) {
    const auto moveOn = [](std::uint8_t* field, std::uint16_t by) {
        writeBigEndian16(field, static_cast<std::uint16_t>(readBigEndian16(field) + by));
    };
    std::uint8_t* bytes = bytesOf(packet);
    moveOn(bytes + 2, counts_[static_cast<std::size_t>(packet.stream)]);
    if (packet.stream != Stream::media) moveOn(bytes + rtpHeaderSize, counts_[0]);
}

}  // namespace mvrtpfec::bench
