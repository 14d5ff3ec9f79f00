// Any sequence of packets into the decoder and into the tests' model of it, which must agree.
// Input: items of a kind byte and, for kind % 4
//   0: a length byte and so many bytes, fed as they are;
//   1: number step, length, seed: a media packet so many numbers on;
//   2: base distance, offset, count, direction, length, fields: an FEC packet with a header of its own;
//   3: count, offset, direction, field, change: an honest FEC packet over the latest media packets, one
//      of its bytes changed when `change` isn't 0.
// Bit 0x40 of the kind of a media packet leaves it out: it is lost, though later FEC packets protect it.

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <span>
#include <vector>

#include "core/big_endian.h"
#include "core/fec_packet.h"
#include "tests/model/decoder_twins.h"

namespace {

using namespace mvrtpfec;
using model::Bytes;

constexpr int mostFailures = 16;
constexpr std::uint8_t lostFlag = 0x40;
/// Steps from here on are up to 16 numbers back, which a small window answers with a failure; others are
/// up to 7 forward.
constexpr std::uint8_t firstStepBack = 0xf0;

/// The input, byte by byte; zeros behind its end.
class Input {
public:
    explicit Input(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    bool atEnd() const { return bytes_.empty(); }
    std::uint8_t next() {
        if (bytes_.empty()) return 0;
        const std::uint8_t byte = bytes_.front();
        bytes_ = bytes_.subspan(1);
        return byte;
    }
    Bytes take(std::size_t count) {
        const auto taken = bytes_.first(std::min(count, bytes_.size()));
        bytes_ = bytes_.subspan(taken.size());
        return Bytes(taken.begin(), taken.end());
    }

private:
    std::span<const std::uint8_t> bytes_;
};

/// What a sender has sent so far.
class Sender {
public:
    Bytes media(Input& input) {
        const std::uint8_t step = input.next();
        number_ = static_cast<std::uint16_t>(number_ + 1 + (step >= firstStepBack ? step - 256 : step % 8));
        Bytes packet(rtpHeaderSize + input.next() % 64, input.next());
        packet[0] = versionTwo;
        packet[1] = static_cast<std::uint8_t>(mediaPayloadType | (packet.size() % 2 != 0 ? markerBit : 0));
        writeBigEndian16(packet.data() + 2, number_);
        sent_.push_back(packet);
        return packet;
    }

    Bytes inventedFec(Input& input) const {
        const auto base = static_cast<std::uint16_t>(number_ - input.next());
        const std::uint8_t offset = input.next(), count = input.next(), direction = input.next();
        Bytes packet(fecPayloadOffset + input.next() % 80, 0x33);
        packet[0] = versionTwo;
        packet[1] = fecPayloadType;
        writeBigEndian16(packet.data() + fec_header::snBase, base);
        writeBigEndian16(packet.data() + fec_header::lengthRecovery, input.next());
        packet[fec_header::payloadTypeRecovery] = input.next();
        packet[fec_header::direction] = direction;
        packet[fec_header::offset] = offset;
        packet[fec_header::protectedCount] = count;
        return packet;
    }

    Bytes honestFec(Input& input) const {
        const std::size_t count = 1 + input.next() % 8u, offset = 1 + input.next() % 8u;
        const FecKind kind = input.next() % 2 != 0 ? FecKind::row : FecKind::column;
        const std::uint8_t field = input.next(), change = input.next();
        Bytes packet = fecOverLatest(count, offset, kind);
        if (!packet.empty()) packet[field % packet.size()] ^= change;
        return packet;
    }

private:
    Bytes fecOverLatest(std::size_t count, std::size_t offset, FecKind kind) const {
        const std::size_t span = (count - 1) * offset + 1;
        if (sent_.size() < span) return {};
        RtpPacket fec;
        std::size_t at = sent_.size() - span;
        startFecPacket(fec, viewOf(sent_[at]), kind, static_cast<std::uint8_t>(offset),
                       static_cast<std::uint8_t>(count));
        for (at += offset; at < sent_.size(); at += offset) addToFecPacket(fec, viewOf(sent_[at]));
        return Bytes(fec.view.data, fec.view.data + fec.view.length);
    }
    static ConstRtpPacketView viewOf(const Bytes& bytes) {
        return {bytes.data(), static_cast<std::uint16_t>(bytes.size())};
    }

    std::uint16_t number_ = 65500;
    std::vector<Bytes> sent_;
};

/// A decoder that has marked most numbers missing costs the model its time, and its successor begins as
/// that of another input does.
bool isSpent(const model::DecoderTwins& twins) {
    return twins.events().tooManyMissing > 0 || twins.failures() >= mostFailures;
}

void feed(model::DecoderTwins& twins, const Bytes& packet) {
    twins.feed(packet);
    twins.forgetReleased();
    if (twins.difference().empty()) return;
    std::cerr << "core against model, " << twins.difference() << '\n';
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input({data, size});
    Sender sender;
    model::DecoderTwins twins(input.next() % 4);
    while (!input.atEnd() && !isSpent(twins)) {
        const std::uint8_t kind = input.next();
        if (kind % 4 == 0) {
            feed(twins, input.take(input.next()));
        } else if (kind % 4 == 1) {
            const Bytes media = sender.media(input);
            if ((kind & lostFlag) == 0) feed(twins, media);
        } else {
            feed(twins, kind % 4 == 2 ? sender.inventedFec(input) : sender.honestFec(input));
        }
    }
    twins.restart();
    if (!twins.difference().empty()) std::abort();
    return 0;
}
