#include "guard/fec_gate.h"

#include <gtest/gtest.h>

#include "tests/shared/packets.h"

namespace mvrtpfec {
namespace {

using Verdict = FecGate::Verdict;

class FecGateTest : public ::testing::Test {
protected:
    Verdict judge(int base, int offset, int count, std::optional<std::uint16_t> position) {
        Bytes fec = fecPacketNaming(static_cast<std::uint16_t>(base), FecKind::column,
                                    static_cast<std::uint8_t>(offset), static_cast<std::uint8_t>(count));
        writeBigEndian16(&fec[2], number_++);
        return gate_.judge(viewOf(fec), position);
    }

    FecGate gate_;
    std::uint16_t number_ = 0;
};

TEST_F(FecGateTest, KeepsBackGroupsWithoutMembersAndWithoutMedia) {
    EXPECT_EQ(judge(100, 0, 5, 110), Verdict::keptBack);
    EXPECT_EQ(judge(100, 5, 0, 110), Verdict::keptBack);
    EXPECT_EQ(judge(100, 5, 5, std::nullopt), Verdict::keptBack);
}

TEST_F(FecGateTest, GroupsAtTheWrap) {
    EXPECT_EQ(judge(65531, 1, 5, 65534), Verdict::pass);  // ends with 65535
    EXPECT_EQ(judge(65531, 1, 5, 65535), Verdict::pass);
    EXPECT_EQ(judge(65532, 1, 5, 65534), Verdict::keptBack);  // crosses it
    EXPECT_EQ(judge(0, 1, 5, 65534), Verdict::early);
    EXPECT_EQ(judge(0, 1, 5, 65535), Verdict::early);
    EXPECT_EQ(judge(0, 1, 5, 0), Verdict::pass);
    EXPECT_EQ(judge(65500, 5, 5, 0), Verdict::keptBack);  // too late
}

TEST_F(FecGateTest, KeepsBackWhatIsFarAhead) {
    EXPECT_EQ(judge(2024, 1, 5, 1000), Verdict::pass);
    EXPECT_EQ(judge(2025, 1, 5, 1000), Verdict::keptBack);
    EXPECT_EQ(judge(488, 1, 5, 65000), Verdict::early);
    EXPECT_EQ(judge(489, 1, 5, 65000), Verdict::keptBack);
}

TEST_F(FecGateTest, RemembersThatManyPackets) {
    for (int i = 0; i < 65; ++i) judge(i * 5, 1, 5, 200);
    number_ = 1;
    EXPECT_EQ(judge(5, 1, 5, 200), Verdict::repeated);
    EXPECT_EQ(judge(11, 1, 5, 200), Verdict::pass) << "the same number over another group";
    number_ = 0;
    EXPECT_EQ(judge(0, 1, 5, 200), Verdict::pass) << "forgotten";
}

}  // namespace
}  // namespace mvrtpfec
