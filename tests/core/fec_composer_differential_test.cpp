#include <algorithm>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "core/fec_composer.h"
#include "tests/core/stream.h"
#include "tests/model/fec_composer.h"

namespace mvrtpfec {
namespace {

/// The C runtime's generator, unseeded.
class RuntimeRand {
public:
    std::uint16_t operator()() {
        state_ = state_ * 214013 + 2531011;
        return state_ >> 16 & 0x7fff;
    }

private:
    std::uint32_t state_ = 1;
};

struct Totals {
    std::uint64_t packets = 0, thrown = 0, passedOver = 0, wrapped = 0;
};

/// Both composers on one stream, each with a sink that throws at the same packets.
class ComposerTwins {
public:
    ComposerTwins(const Matrix& m, RuntimeRand& numbers, Totals& totals)
        : totals_(totals),
          core_([this](std::shared_ptr<RtpPacket> fec) { take(fromCore_, bytesOf(fec->view)); }, m.mode,
                m.columns, m.rows),
          model_(makeModel(m, numbers)) {}

    void protect(const Bytes& media, bool sinkThrows) {
        sinkThrows_ = sinkThrows;
        fromCore_.clear();
        fromModel_.clear();
        const bool coreThrew = throws([&] { core_.protect(viewOf(media)); });
        ASSERT_EQ(coreThrew, throws([&] { model_.protect(media); }));
        ASSERT_EQ(fromCore_, fromModel_);
        count(coreThrew);
    }

private:
    model::FecComposer makeModel(const Matrix& m, RuntimeRand& numbers) {
        const std::uint16_t column = numbers();
        const std::uint16_t row = numbers();
        return {
            [this](Bytes fec) { take(fromModel_, std::move(fec)); }, m.mode, m.columns, m.rows, column, row};
    }
    void take(std::vector<Bytes>& list, Bytes fec) {
        list.push_back(std::move(fec));
        if (sinkThrows_) throw std::runtime_error("sink");
    }
    template <class Function>
    static bool throws(Function function) {
        try {
            function();
            return false;
        } catch (const std::runtime_error&) {
            return true;
        }
    }
    void count(bool threw) {
        totals_.packets += fromCore_.size();
        totals_.thrown += threw;
        totals_.wrapped += static_cast<std::uint64_t>(
            std::ranges::count_if(fromCore_, [](const Bytes& fec) { return numberOf(fec) == 65535; }));
    }

    Totals& totals_;
    bool sinkThrows_ = false;
    std::vector<Bytes> fromCore_;
    std::vector<Bytes> fromModel_;
    CFecComposer core_;
    model::FecComposer model_;
};

Bytes drawMedia(Random& random, std::uint16_t number, std::size_t usualLength) {
    const std::size_t length = random.chance(0.9) ? usualLength : random.below(1500);
    Bytes media = randomMediaPacket(random, number, std::max<std::size_t>(length, 12));
    media.resize(length);
    if (length >= 2 && random.chance(0.05)) media[0] = static_cast<std::uint8_t>(random.below(256));
    if (length >= 2 && random.chance(0.05)) media[1] = static_cast<std::uint8_t>(random.below(256));
    if (length >= 2 && random.chance(0.02)) media[1] = fecPayloadType;
    return media;
}

bool isPassedOver(const Bytes& media) {
    return media.size() < 12 || media.size() > 1400 || (media.size() < 28 && (media[1] & 0x7f) == 96);
}

void runStream(std::uint64_t seed, RuntimeRand& numbers, Totals& totals) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    ComposerTwins twins(drawMatrix(random, fecNone), numbers, totals);
    const double throwing = random.chance(0.2) ? 0.3 : 0;
    const std::size_t usualLength = random.chance(0.3) ? 1328 : 12 + random.below(100);
    auto number = static_cast<std::uint16_t>(random.below(65536));
    for (std::uint32_t n = random.below(500); n > 0 && !::testing::Test::HasFatalFailure(); --n) {
        const Bytes media = drawMedia(random, number++, usualLength);
        totals.passedOver += isPassedOver(media);
        twins.protect(media, random.chance(throwing));
    }
}

TEST(FecComposerDifferential, randomStreams) {
    std::thread([] {
        RuntimeRand numbers;
        Totals totals;
        for (std::uint64_t seed = 1; seed <= 1000 && !::testing::Test::HasFailure(); ++seed)
            runStream(seed, numbers, totals);
        EXPECT_GT(totals.packets, 15000u);
        EXPECT_GT(totals.thrown, 1000u);
        EXPECT_GT(totals.passedOver, 1000u);
    }).join();
}

TEST(FecComposerDifferential, sequenceCountersWrap) {
    std::thread([] {
        RuntimeRand numbers;
        Totals totals;
        for (const Matrix& matrix : {Matrix{fecRow, 1, 4}, Matrix{fecColumn, 1, 4}}) {
            ComposerTwins twins(matrix, numbers, totals);
            const Bytes media = mediaPacket(1, 20);
            for (int n = 0; n < 4 * 65600 && !::testing::Test::HasFailure(); ++n) twins.protect(media, false);
        }
        EXPECT_GE(totals.wrapped, 5u);
    }).join();
}

}  // namespace
}  // namespace mvrtpfec
