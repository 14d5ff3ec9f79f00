#include "tests/host/arrivals.h"

#include <random>

#include "core/big_endian.h"
#include "engine/fec_sender.h"

namespace mvrtpfec {

std::vector<std::uint8_t> mediaPacket(std::uint16_t number, std::uint8_t source, std::size_t size) {
    std::vector<std::uint8_t> bytes(size);
    for (std::size_t i = rtpHeaderSize; i < size; ++i)
        bytes[i] = static_cast<std::uint8_t>(i * 7 + number * 13u + source);
    bytes[0] = versionTwo;
    bytes[1] = mediaPayloadType;
    writeBigEndian16(&bytes[2], number);
    writeBigEndian32(&bytes[4], number * 100u);
    bytes[11] = source;
    return bytes;
}

Arrivals protectedStream(std::uint16_t first, std::size_t count, const MatrixConfig& matrix,
                         std::uint8_t source) {
    Arrivals sent;
    FecSender sender(
        [&](FecStream stream, const std::shared_ptr<RtpPacket>& fec) {
            sent.push_back({stream == FecStream::a ? StreamPort::fecA : StreamPort::fecB,
                            {fec->view.data, fec->view.data + fec->view.length}});
        },
        matrix.mode, matrix.columns, matrix.rows);
    for (std::size_t i = 0; i < count; ++i) {
        auto media = mediaPacket(static_cast<std::uint16_t>(first + i), source, 100 + i * 37 % 1200);
        writeBigEndian32(&media[4], source << 26 | static_cast<std::uint32_t>(i * 100));
        sent.push_back({StreamPort::media, media});
        sender.push(viewOf(media));
    }
    return sent;
}

Arrivals throughChannel(const Arrivals& sent, const ChannelConfig& config) {
    Arrivals left;
    Channel channel(config, [&](StreamPort port, const std::vector<std::uint8_t>& packet) {
        left.push_back({port, packet});
    });
    for (const Arrival& packet : sent) channel.push(packet.port, packet.bytes);
    channel.finish();
    return left;
}

Story randomStory(std::uint32_t seed) {
    std::mt19937 random(seed);
    const auto oneOf = [&](unsigned count) { return static_cast<unsigned>(random() % count); };
    Story story;
    for (std::uint8_t run = 1; run <= 3; ++run) {
        const ChannelConfig channel{.loss = 0.01 * oneOf(6),
                                    .fecLoss = 0.01 * oneOf(6),
                                    .burst = 1.0 + oneOf(8),
                                    .reorder = oneOf(16),
                                    .duplicate = 0.01 * oneOf(4),
                                    .seed = seed + run};
        const MatrixConfig matrix = oneOf(2) == 0 ? MatrixConfig{fecBoth, 5, 5} : MatrixConfig{fecRow, 10, 4};
        const auto first = static_cast<std::uint16_t>(run == 2 ? 63000 : random());
        Arrivals sent = protectedStream(first, 4000, matrix, run);
        for (const Arrival& packet : sent)
            if (packet.port == StreamPort::media) story.sent.insert(viewOf(packet.bytes).timestamp());
        const auto at = [&](std::size_t index) { return sent.begin() + static_cast<std::ptrdiff_t>(index); };
        constexpr std::size_t spared = 60;
        const auto append = [&](auto from, auto to) {
            story.arrivals.insert(story.arrivals.end(), from, to);
        };
        append(at(0), at(spared));
        Arrivals middle = throughChannel({at(spared), sent.end() - spared}, channel);
        const auto outage = middle.begin() + 1000;
        if (oneOf(2) == 0) middle.erase(outage, outage + 30 + 10 * oneOf(250));
        append(middle.begin(), middle.end());
        append(sent.end() - spared, sent.end());
    }
    for (const Arrival& packet : story.arrivals)
        if (packet.port == StreamPort::media) story.came.insert(viewOf(packet.bytes).timestamp());
    return story;
}

}  // namespace mvrtpfec
