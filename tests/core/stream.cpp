#include "tests/core/stream.h"

#include <algorithm>
#include <array>
#include <map>

#include "core/big_endian.h"
#include "tests/model/fec_composer.h"

namespace mvrtpfec {

namespace {

std::size_t drawLength(Random& random, const StreamPlan& plan) {
    if (!random.chance(plan.otherLength)) return plan.usualLength;
    if (random.chance(0.1)) return 12 + random.below(3000);
    return 12 + random.below(static_cast<std::uint32_t>(plan.usualLength) * 2);
}

Bytes drawMedia(Random& random, const StreamPlan& plan, std::uint16_t number) {
    Bytes media = randomMediaPacket(random, number, drawLength(random, plan));
    if (!random.chance(plan.oddHeader)) return media;
    if (random.chance(0.9)) {
        media[0] = static_cast<std::uint8_t>(random.below(256));
    } else if (random.chance(0.5)) {
        media[1] = static_cast<std::uint8_t>(random.below(256));
    } else {
        media.resize(random.below(30));
    }
    return media;
}

/// Changes one field of an FEC packet in a way that leaves the rest plausible.
void breakFec(Random& random, Bytes& fec) {
    const auto anyByte = static_cast<std::uint8_t>(random.below(256));
    switch (random.below(12)) {
        case 0:
            fec[fec_header::snBase + 1] = anyByte;
            break;
        case 1:
            fec[fec_header::snBase] = anyByte;
            break;
        case 2:
            fec[fec_header::offset] = random.chance(0.5) ? 0 : anyByte;
            break;
        case 3:
            fec[fec_header::protectedCount] = random.chance(0.3) ? 0 : anyByte;
            break;
        case 4:
            fec[fec_header::direction] = anyByte;
            break;
        case 5:
            fec[fec_header::lengthRecovery + 1] = anyByte;
            break;
        case 6:
            fec[fec_header::lengthRecovery] = static_cast<std::uint8_t>(random.below(8));
            break;
        case 7:
        case 8:
            fec[fec_header::payloadTypeRecovery] ^= mediaPayloadType ^ fecPayloadType;
            break;
        case 9:
            fec[fec_header::payloadTypeRecovery] = anyByte;
            break;
        case 10:
            fec[0] = anyByte;
            break;
        default:
            fec.resize(random.below(static_cast<std::uint32_t>(fec.size()) + 20));
            break;
    }
}

/// An FEC packet near `number`, its count often one that fits the usual matrices.
Bytes inventFec(Random& random, std::uint16_t number) {
    const auto base = static_cast<std::uint16_t>(number + random.below(60) - 40);
    const FecKind kind = random.chance(0.5) ? FecKind::row : FecKind::column;
    const auto offset = static_cast<std::uint8_t>(random.chance(0.9) ? random.below(8) : random.below(256));
    const auto count =
        static_cast<std::uint8_t>(random.chance(0.9) ? 4 + random.below(3) : random.below(256));
    Bytes fec = fecPacketNaming(base, kind, offset, count, 28 + random.below(100));
    writeBigEndian16(fec.data() + fec_header::lengthRecovery, static_cast<std::uint16_t>(random.below(100)));
    fec[fec_header::payloadTypeRecovery] = random.chance(0.5) ? mediaPayloadType : fecPayloadType;
    if (random.chance(0.02)) {
        fec[fec_header::offset] = 255;
        fec[fec_header::protectedCount] = 255;
    }
    return fec;
}

/// What lies between the sender and the receiver. Packets leave by their departure time, a packet's
/// own turn unless it is late.
class Channel {
public:
    Channel(Random& random, const StreamPlan& plan) : random_(random), plan_(plan) {}

    void send(Bytes packet) {
        ++turn_;
        if (isLost()) return;
        if (random_.chance(plan_.repeat)) depart(packet);
        depart(std::move(packet));
    }
    std::vector<Bytes> takeArrivals() {
        std::vector<Bytes> arrivals;
        for (auto& [departure, packet] : underWay_) arrivals.push_back(std::move(packet));
        return arrivals;
    }

private:
    bool isLost() {
        if (random_.chance(plan_.burst)) burstLeft_ = 1 + random_.below(12);
        if (burstLeft_ > 0) {
            --burstLeft_;
            return true;
        }
        return random_.chance(plan_.loss);
    }
    void depart(Bytes packet) {
        const std::size_t delay = random_.chance(plan_.late) ? 1 + random_.below(30) : 0;
        underWay_.emplace(turn_ + delay, std::move(packet));
    }

    Random& random_;
    const StreamPlan& plan_;
    std::size_t turn_ = 0;
    std::uint32_t burstLeft_ = 0;
    std::multimap<std::size_t, Bytes> underWay_;
};

/// Media and FEC packets over any of the media sent so far.
class OddGroupSender {
public:
    explicit OddGroupSender(Random& random)
        : random_(random),
          firstNumber_(static_cast<std::uint16_t>(random.below(65536))),
          loss_(random.unit() * random.unit() * 0.1),
          rowCount_(drawCount()),
          columnCount_(drawCount()),
          columnOffset_(drawCount()) {}

    void sendMedia() {
        makeMedia();
        if (!random_.chance(loss_)) arrivals_.push_back(sent_.back());
    }
    void loseMany() {
        for (std::uint32_t n = random_.below(3000); n > 0; --n) makeMedia();
    }
    void repeatAny() { arrivals_.push_back(sent_[random_.below(sentCount())]); }

    void sendFec() {
        const bool row = random_.chance(0.5);
        const std::size_t offset = row || random_.chance(0.2) ? random_.below(4) : columnOffset_;
        const std::size_t count = row ? rowCount_ : columnCount_;
        std::vector<Bytes> group;
        std::size_t at = sentCount() - 1 - random_.below(std::min(sentCount(), 700u));
        do group.push_back(sent_[at]);
        while (group.size() < count && (at += offset) < sent_.size());
        Bytes fec =
            fecPacketOver(group, row ? FecKind::row : FecKind::column, static_cast<std::uint8_t>(offset));
        fec[fec_header::protectedCount] = static_cast<std::uint8_t>(count);
        arrivals_.push_back(std::move(fec));
    }

    std::vector<Bytes> takeArrivals() { return std::move(arrivals_); }

private:
    std::uint8_t drawCount() {
        constexpr std::array<std::uint8_t, 9> counts = {0, 1, 2, 3, 5, 20, 100, 200, 255};
        return counts[random_.below(counts.size())];
    }
    std::uint32_t sentCount() const { return static_cast<std::uint32_t>(sent_.size()); }
    void makeMedia() {
        sent_.push_back(
            randomMediaPacket(random_, static_cast<std::uint16_t>(firstNumber_ + sent_.size()), 40));
    }

    Random& random_;
    std::uint16_t firstNumber_;
    double loss_;
    std::uint8_t rowCount_, columnCount_, columnOffset_;
    std::vector<Bytes> sent_;
    std::vector<Bytes> arrivals_;
};

}  // namespace

Matrix drawMatrix(Random& random, int leastMode) {
    const std::uint32_t most = random.chance(0.7) ? 6 : 20;
    for (;;) {
        const auto mode =
            leastMode + static_cast<int>(random.below(static_cast<std::uint32_t>(4 - leastMode)));
        const auto columns = static_cast<int>(1 + random.below(most));
        const auto rows = static_cast<int>(4 + random.below(most - 3));
        if (columns * rows <= 100 && (mode != 3 || columns >= 4)) return {mode, columns, rows};
    }
}

StreamPlan drawPlan(Random& random, bool hostile) {
    StreamPlan plan;
    plan.firstNumber =
        static_cast<std::uint16_t>(random.chance(0.5) ? 65536 - random.below(300) : random.below(65536));
    plan.mediaPackets = 50 + random.below(300);
    plan.matrixChanges = random.chance(0.2) ? 1 + random.below(2) : 0;
    plan.usualLength = random.chance(0.1) ? 1328 : 12 + random.below(60);
    plan.otherLength = random.chance(0.3) ? 0.2 : 0;
    plan.loss = random.chance(0.8) ? random.unit() * random.unit() * 0.2 : 0;
    plan.burst = random.chance(0.4) ? random.unit() * 0.03 : 0;
    plan.repeat = random.chance(0.2) ? 0.02 : 0;
    plan.late = random.chance(0.1) ? random.unit() * 0.05 : 0;
    if (!hostile) return plan;
    plan.oddHeader = random.chance(0.5) ? random.unit() * 0.05 : 0;
    plan.brokenFec = random.unit() * 0.3;
    plan.invented = random.chance(0.5) ? random.unit() * 0.1 : 0;
    return plan;
}

std::vector<Bytes> makeStream(Random& random, const StreamPlan& plan) {
    Channel channel(random, plan);
    auto number = plan.firstNumber;
    auto sequence = static_cast<std::uint16_t>(random.below(65536));
    const auto sendFec = [&](Bytes fec) {
        if (random.chance(plan.brokenFec)) breakFec(random, fec);
        channel.send(std::move(fec));
    };
    for (std::size_t part = 0; part <= plan.matrixChanges; ++part) {
        const Matrix m = drawMatrix(random, 1);
        model::FecComposer composer(sendFec, m.mode, m.columns, m.rows, sequence, sequence);
        for (std::size_t n = plan.mediaPackets / (plan.matrixChanges + 1); n > 0; --n) {
            const Bytes media = drawMedia(random, plan, number++);
            channel.send(media);
            composer.protect(media);
            if (random.chance(plan.invented)) channel.send(inventFec(random, number));
        }
    }
    return channel.takeArrivals();
}

std::vector<Bytes> makeOddGroupStream(Random& random) {
    OddGroupSender sender(random);
    for (std::size_t n = 20 + random.below(600); n > 0; --n) {
        sender.sendMedia();
        if (random.chance(0.003)) sender.loseMany();
        if (random.chance(0.003)) sender.repeatAny();
        if (random.chance(0.2)) sender.sendFec();
    }
    return sender.takeArrivals();
}

}  // namespace mvrtpfec
