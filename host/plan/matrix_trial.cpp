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
    std::uint64_t finish() {
        guard_.flush();
        decoder_.reset();
        return static_cast<std::uint64_t>(std::ranges::count(delivered_, true));
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

    std::vector<bool> delivered_;  ///< by place in the stream
    std::unique_ptr<CFecDecoder> decoder_ = makeDecoder();
    PacketGuard guard_;
};

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
          places_{0, trace.lost.size() / 3, trace.lost.size() * 2 / 3} {}

    void push(StreamPort port, const std::vector<std::uint8_t>& packet) {
        std::size_t& place = places_[static_cast<std::size_t>(port)];
        const bool isLost = trace_.lost[place];
        place = (place + 1) % trace_.lost.size();
        if (!isLost)
            receiving_.push(packet);
        else if (port == StreamPort::media)
            ++droppedMedia_;
    }
    std::uint64_t droppedMedia() const { return droppedMedia_; }

private:
    const LossTrace& trace_;
    Receiving& receiving_;
    std::array<std::size_t, 3> places_;
    std::uint64_t droppedMedia_ = 0;
};

/// A stream of media packets and the FEC packets that they complete.
template <class Network>
void sendThrough(Network& network, const MatrixConfig& matrix, std::uint64_t packets) {
    CFecComposer composer(
        [&](const std::shared_ptr<RtpPacket>& fec) {
            network.push(fecKind(fec->view) == FecKind::row ? StreamPort::fecB : StreamPort::fecA,
                         {fec->view.data, fec->view.data + fec->view.length});
        },
        matrix.mode, matrix.columns, matrix.rows);
    for (std::uint64_t i = 0; i < packets; ++i) {
        const auto media = mediaPacket(i);
        network.push(StreamPort::media, {media.begin(), media.end()});
        composer.protect({media.data(), static_cast<std::uint16_t>(media.size())});
    }
}

}  // namespace

double TrialFigures::residualLoss() const {
    return sent == 0 ? 0 : 1 - static_cast<double>(delivered) / static_cast<double>(sent);
}

TrialFigures tryMatrix(const MatrixConfig& matrix, const ChannelConfig& channel, std::uint64_t packets) {
    Receiving receiving(packets);
    Channel network(channel, [&](StreamPort, const auto& packet) { receiving.push(packet); });
    sendThrough(network, matrix, packets);
    network.finish();
    return {packets, network.droppedMedia(), receiving.finish()};
}

TrialFigures tryMatrix(const MatrixConfig& matrix, const LossTrace& trace, std::uint64_t packets) {
    Receiving receiving(packets);
    TracedNetwork network(trace, receiving);
    sendThrough(network, matrix, packets);
    return {packets, network.droppedMedia(), receiving.finish()};
}

}  // namespace mvrtpfec
