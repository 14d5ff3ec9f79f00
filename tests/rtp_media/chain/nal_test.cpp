#include <gtest/gtest.h>

#include "rtp_media/bits/emulation_prevention.h"
#include "tests/rtp_media/chain/collected_units.h"

namespace mvrtpfec::test {
namespace {

std::unique_ptr<NAL> unitOf(const Bytes& bytes) {
    auto unit = std::make_unique<NAL>(StreamType::h264, static_cast<std::int32_t>(bytes.size()));
    unit->append(bytes);
    return unit;
}

std::optional<std::pair<int, int>> headerOf(const Bytes& bytes) {
    const auto unit = unitOf(bytes);
    const auto& header = unit->header();
    if (!header) return std::nullopt;
    return std::pair<int, int>{header->value, header->startCodeLength};
}

TEST(Nal, FindsItsHeaderBehindAnyStartCode) {
    using Found = std::pair<int, int>;
    EXPECT_EQ(headerOf({0, 0, 0, 1, 0x67, 0x42}), (Found{0x67, 4}));
    EXPECT_EQ(headerOf({0, 0, 1, 0x65}), (Found{0x65, 3}));
    EXPECT_EQ(headerOf({0x41, 0, 0, 1}), (Found{0x41, 0}));
    EXPECT_EQ(headerOf({0, 0, 0x41}), (Found{0x41, 2})) << "zeros without a start code";
    EXPECT_EQ(headerOf({1, 0x41}), (Found{0x41, 1}));
    EXPECT_EQ(headerOf({0, 0, 1}), std::nullopt);
    EXPECT_EQ(headerOf({0, 0, 0}), std::nullopt);
    EXPECT_EQ(headerOf({}), std::nullopt);
}

/// Emulation prevention told byte by byte.
Bytes modelRbsp(const Bytes& unit) {
    Bytes out;
    int zeros = 0;
    for (std::size_t i = 0; i < unit.size(); ++i) {
        if (unit[i] == 3 && zeros == 2 && i + 1 < unit.size() && unit[i + 1] < 4) {
            zeros = 0;
            continue;
        }
        zeros = unit[i] == 0 ? zeros + 1 : 0;
        out.push_back(unit[i]);
    }
    return out;
}

TEST(Nal, RbspIsTheModelsAndComesBackFromWhatWasInserted) {
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        Bytes bytes(random() % 200);
        const auto others = 6 + random() % 60;
        for (auto& byte : bytes) {
            const auto draw = random() % others;
            byte = static_cast<std::uint8_t>(draw > 5 ? draw : draw > 2 ? 0 : draw + 1);
        }
        const auto unit = unitOf(bytes);
        const auto rbsp = unit->rbsp();
        ASSERT_EQ(Bytes(rbsp.begin(), rbsp.end()), modelRbsp(bytes)) << "round " << round;

        bytes.push_back(0x80);  // as the stop bit makes it, the last byte isn't zero
        const Bytes inserted = insertEmulationPrevention(bytes);
        ASSERT_EQ(modelRbsp(inserted), bytes) << "round " << round;
        for (std::size_t i = 2; i < inserted.size(); ++i)
            ASSERT_FALSE(inserted[i - 2] == 0 && inserted[i - 1] == 0 && inserted[i] < 3)
                << "round " << round;
    }
}

TEST(Nal, FragmentsReadTheUnitsBytesAndOutliveIt) {
    auto unit = unitOf({1, 2, 3, 4, 5});
    const auto* const bytes = unit->bytes().data();
    const auto fragment = NAL::fragmentOf(*unit, 1, 3);
    const auto inner = NAL::fragmentOf(*fragment, 2, 1);
    unit.reset();
    EXPECT_EQ(fragment->bytes().data(), bytes + 1);
    EXPECT_EQ(Bytes(fragment->bytes().begin(), fragment->bytes().end()), (Bytes{2, 3, 4}));
    EXPECT_EQ(inner->bytes()[0], 4);
    EXPECT_EQ(fragment->streamType(), StreamType::fragment);
}

TEST(SampleTiming, RoundsTicksAwayFromZeroAndNamesVideo) {
    EXPECT_EQ(ticks90k(10'000'000), 90'000);
    EXPECT_EQ(ticks90k(55), 0);  // 0.495
    EXPECT_EQ(ticks90k(56), 1);  // 0.504
    EXPECT_EQ(ticks90k(-56), -1);
    EXPECT_EQ(ticks90k(500), 5);  // 4.5
    EXPECT_EQ(ticks90k(-500), -5);
    const SampleTiming timing;
    EXPECT_EQ(timing.slots32[17], 0xFFFFFFFFU);
    EXPECT_EQ(timing.slots16[2], 0xFFFF);
    std::vector<int> video;
    for (int type = -1; type < 80; ++type) {
        if (isVideo(static_cast<StreamType>(type))) video.push_back(type);
    }
    EXPECT_EQ(video, (std::vector<int>{0, 2, 7, 9, 15, 17, 21, 22, 23}));
}

}  // namespace
}  // namespace mvrtpfec::test
