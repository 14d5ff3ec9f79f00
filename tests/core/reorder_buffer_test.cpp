#include "core/reorder_buffer.h"

#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace mvrtpfec {
namespace {

using Numbers = std::vector<std::int32_t>;
using Buffer = CRtpPacketReorderBuffer<std::int32_t>;

Numbers range(std::int32_t first, std::int32_t last) {
    Numbers numbers(static_cast<std::size_t>(last - first + 1));
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

/// The receiver's buffer, its items nothing but their numbers.
class ReorderBuffer : public ::testing::Test {
protected:
    /// Pushes the numbers, taking out after each whatever is due; returns all that came out.
    Numbers feed(const Numbers& numbers) {
        Numbers out;
        for (const std::int32_t number : numbers) {
            buffer.Push(number);
            for (std::int32_t item = -1; buffer.Pop(item);) out.push_back(item);
        }
        return out;
    }

    Buffer buffer{20, 65535, [](std::int32_t number) { return number; }};
};

/// The second number of the new cycle is taken for yet another wrap while 65535 still waits.
TEST_F(ReorderBuffer, holeBeforeTheWrapCountsItTwice) {
    EXPECT_EQ(feed(range(65400, 65533)), range(65400, 65533));
    EXPECT_EQ(feed({65535, 0}), Numbers{});
    EXPECT_EQ(feed({1}), Numbers{1});
    EXPECT_EQ(feed({2, 3}), (Numbers{2, 3}));
}

TEST_F(ReorderBuffer, numberAboveTheMaximumThrows) {
    Buffer small(4, 99, [](std::int32_t number) { return number; });
    try {
        small.Push(100);
        ADD_FAILURE();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Invalid sequence number : 100. Max allowed : 99");
    }
    EXPECT_NO_THROW(small.Push(99));
}

TEST_F(ReorderBuffer, fullBufferDropsBeforeItChecksTheNumber) {
    feed({100});
    EXPECT_EQ(feed(range(102, 121)), Numbers{});
    EXPECT_THROW(buffer.Push(65536), std::runtime_error);
    std::int32_t item = 0;
    EXPECT_TRUE(buffer.Pop(item));
    EXPECT_EQ(item, 103);
}

TEST_F(ReorderBuffer, missingKeyFunctionIsABadFunctionCall) {
    Buffer keyless(20, 65535, nullptr);
    EXPECT_THROW(keyless.Push(1), std::bad_function_call);
}

TEST_F(ReorderBuffer, capacityIsAtMostHalfTheMaximum) {
    EXPECT_NO_THROW(Buffer(32767, 65535, nullptr));
    EXPECT_NO_THROW(Buffer(5, 10, nullptr));
    try {
        Buffer(32768, 65535, nullptr);
        ADD_FAILURE();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(),
                     "Packet reorder buffer size must be less than half the max sequence number");
    }
}

TEST_F(ReorderBuffer, itemsAreReleasedWhenDroppedAndMovedOutWhenPopped) {
    using Item = std::shared_ptr<std::int32_t>;
    CRtpPacketReorderBuffer<Item> owner(20, 65535, [](Item item) { return *item; });
    std::vector<std::weak_ptr<std::int32_t>> watched;
    const auto push = [&](std::int32_t number) {
        const auto item = std::make_shared<std::int32_t>(number);
        watched.push_back(item);
        owner.Push(item);
    };
    push(10);
    push(12);
    Item slot;
    ASSERT_TRUE(owner.Pop(slot));
    EXPECT_EQ(slot.use_count(), 1);
    push(5000);
    EXPECT_TRUE(watched[1].expired());
    owner.Clear();
    EXPECT_TRUE(watched[2].expired());
}

}  // namespace
}  // namespace mvrtpfec
