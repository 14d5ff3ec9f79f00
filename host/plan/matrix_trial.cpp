#include "host/plan/matrix_trial.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "core/fec_composer.h"
#include "core/fec_decoder.h"
#include "core/fec_packet.h"
#include "guard/packet_guard.h"
#include "host/plan/drawn_losses.h"

namespace mvrtpfec {

namespace {

/// Enough for a loss pattern; what is in the packets doesn't matter.
constexpr std::size_t payloadSize = 16;
/// Timestamps tell the packets apart where numbers wrap.
constexpr std::uint32_t ticksApart = 90;

/// Guard and decoder, replaced when it fails.
class Receiving {
public:
    explicit Receiving(std::uint64_t packets)
        : delivered_(packets),
          guard_([this](ReceiverInput, std::unique_ptr<RtpPacket> packet) { feed(*packet); }) {}

    void push(const std::vector<std::uint8_t>& packet) {
        guard_.push(std::make_unique<RtpPacket>(packet.data(), packet.size()));
    }
    /// What was delivered, by place in the stream.
    const std::vector<bool>& finish() {
        guard_.flush();
        decoder_.reset();
        return delivered_;
    }

private:
    std::unique_ptr<CFecDecoder> makeDecoder() {
        return std::make_unique<CFecDecoder>([this](const RtpPacket* packet) {
            const std::size_t index = packet->view.timestamp() / ticksApart;
            if (index < delivered_.size()) delivered_[index] = true;
        });
    }
    void feed(const RtpPacket& packet) {
        if (decoder_->Feed(packet.view.data, packet.view.length) != S_OK) decoder_ = makeDecoder();
    }

    std::vector<bool> delivered_;
    std::unique_ptr<CFecDecoder> decoder_ = makeDecoder();
    PacketGuard guard_;
};

/// Packets of two matrices.
std::uint64_t marginOf(const MatrixConfig& matrix) {
    return 2 * static_cast<std::uint64_t>(matrix.columns) * static_cast<std::uint64_t>(matrix.rows);
}

std::array<std::uint8_t, rtpHeaderSize + payloadSize> mediaPacket(std::uint64_t number) {
    std::array<std::uint8_t, rtpHeaderSize + payloadSize> packet{versionTwo, mediaPayloadType};
    writeBigEndian16(&packet[2], static_cast<std::uint16_t>(number));
    writeBigEndian32(&packet[4], static_cast<std::uint32_t>(number * ticksApart));
    return packet;
}

/// Loses what a trace says.
class TracedNetwork {
public:
    /// The trace has packets.
    TracedNetwork(const LossTrace& trace, Receiving& receiving)
        : trace_(trace),
          receiving_(receiving),
          places_{TraceLosses::startOf(StreamPort::media, trace),
                  TraceLosses::startOf(StreamPort::fecA, trace),
                  TraceLosses::startOf(StreamPort::fecB, trace)} {}

    void push(StreamPort port, const std::vector<std::uint8_t>& packet) {
        std::size_t& place = places_[static_cast<std::size_t>(port)];
        const bool isLost = trace_.lost[place];
        place = (place + 1) % trace_.lost.size();
        if (!isLost)
            receiving_.push(packet);
        else if (port == StreamPort::media)
            ++droppedMedia_;
    }
    void finish() {}
    std::uint64_t droppedMedia() const { return droppedMedia_; }

private:
    const LossTrace& trace_;
    Receiving& receiving_;
    std::array<std::size_t, 3> places_;
    std::uint64_t droppedMedia_ = 0;
};

/// A stream of media packets and the FEC packets that they complete, through a network in its middle part.
template <class Network>
TrialFigures sendThrough(Network& network, Receiving& receiving, const MatrixConfig& matrix,
                         std::uint64_t packets) {
    bool isLossless = true;
    const auto send = [&](StreamPort port, const std::uint8_t* bytes, std::size_t size) {
        const std::vector<std::uint8_t> packet(bytes, bytes + size);
        isLossless ? receiving.push(packet) : network.push(port, packet);
    };
    CFecComposer composer(
        [&](const std::shared_ptr<RtpPacket>& fec) {
            send(fecKind(fec->view) == FecKind::row ? StreamPort::fecB : StreamPort::fecA, fec->view.data,
                 fec->view.length);
        },
        matrix.mode, matrix.columns, matrix.rows);
    const std::uint64_t margin = marginOf(matrix);
    for (std::uint64_t i = 0; i < packets + 2 * margin; ++i) {
        if (i == margin + packets) network.finish();
        isLossless = i < margin || i >= margin + packets;
        const auto media = mediaPacket(i);
        send(StreamPort::media, media.data(), media.size());
        composer.protect({media.data(), static_cast<std::uint16_t>(media.size())});
    }
    TrialFigures figures;
    figures.sent = packets;
    figures.dropped = network.droppedMedia();
    const std::vector<bool>& delivered = receiving.finish();
    for (std::uint64_t i = 0; i < packets; ++i)
        if (!delivered[margin + i]) figures.lost.add(i);
    return figures;
}

}  // namespace

TrialFigures tryMatrix(const MatrixConfig& matrix, const ChannelConfig& channel, std::uint64_t packets) {
    packets = std::min(packets, mostTried);
    Receiving receiving(packets + 2 * marginOf(matrix));
    Channel network(channel, [&](StreamPort, const auto& packet) { receiving.push(packet); });
    return sendThrough(network, receiving, matrix, packets);
}

TrialFigures tryMatrix(const MatrixConfig& matrix, const LossTrace& trace, std::uint64_t packets) {
    packets = std::min(packets, mostTried);
    Receiving receiving(packets + 2 * marginOf(matrix));
    TracedNetwork network(trace, receiving);
    return sendThrough(network, receiving, matrix, packets);
}

}  // namespace mvrtpfec
