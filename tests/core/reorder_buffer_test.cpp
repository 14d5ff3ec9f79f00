#include "core/reorder_buffer.h"

#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace mvrtpfec::testing {
namespace {

using Numbers = std::vector<std::int32_t>;
using Buffer = CRtpPacketReorderBuffer<std::int32_t>;

Numbers range(std::int32_t first, std::int32_t last) {
    Numbers numbers(static_cast<std::size_t>(last - first + 1));
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

Numbers operator+(Numbers left, const Numbers& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
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

TEST_F(ReorderBuffer, orderedNumbersPassAtOnce) {
    EXPECT_EQ(feed({5000}), Numbers{5000});
    EXPECT_EQ(feed({5001}), Numbers{5001});
    EXPECT_EQ(feed({5003}), Numbers{});
    EXPECT_EQ(feed({5002}), (Numbers{5002, 5003}));
}

TEST_F(ReorderBuffer, emptyBufferHasNothingDue) {
    std::int32_t slot = 7;
    EXPECT_FALSE(buffer.Pop(slot));
    EXPECT_EQ(slot, 7);
}

TEST_F(ReorderBuffer, fullBufferGivesUpTheOldestWaiting) {
    EXPECT_EQ(feed(range(100, 109)), range(100, 109));
    EXPECT_EQ(feed(range(111, 130)), Numbers{});
    EXPECT_EQ(feed({131}), range(112, 131));
    EXPECT_EQ(feed({132}), Numbers{132});
}

TEST_F(ReorderBuffer, repeatBlocksUntilTheBufferIsFull) {
    EXPECT_EQ(feed(range(100, 105)), range(100, 105));
    EXPECT_EQ(feed({103}), Numbers{});
    EXPECT_EQ(feed(range(106, 124)), Numbers{});
    EXPECT_EQ(feed({125}), range(106, 125));
}

TEST_F(ReorderBuffer, jumpBeyondTheWindowStartsAfresh) {
    EXPECT_EQ(feed(range(1000, 1004)), range(1000, 1004));
    EXPECT_EQ(feed({1006, 1007}), Numbers{});
    EXPECT_EQ(feed({9000}), Numbers{9000});
    EXPECT_EQ(feed({9001, 1005}), (Numbers{9001, 1005}));
}

TEST_F(ReorderBuffer, windowIsTwiceTheCapacity) {
    EXPECT_EQ(feed({1000, 1040}), Numbers{1000});
    EXPECT_EQ(feed({1001}), Numbers{1001});
    buffer.Clear();
    EXPECT_EQ(feed({1000, 1041}), (Numbers{1000, 1041}));
}

TEST_F(ReorderBuffer, wrapsInOrder) {
    const Numbers across = range(65500, 65535) + range(0, 100);
    EXPECT_EQ(feed(range(65400, 65499) + across), range(65400, 65499) + across);
}

TEST_F(ReorderBuffer, sortsAcrossTheWrap) {
    EXPECT_EQ(feed(range(65400, 65534) + Numbers{0, 65535, 1, 2}), range(65400, 65535) + range(0, 2));
}

TEST_F(ReorderBuffer, firstNumbersMayBeNegativeKeys) {
    EXPECT_EQ(feed(range(65500, 65535) + range(0, 60)), range(65500, 65535) + range(0, 60));
    EXPECT_EQ(feed({62, 61}), (Numbers{61, 62}));
}

/// The second number of the new cycle is taken for yet another wrap while 65535 still waits.
TEST_F(ReorderBuffer, holeBeforeTheWrapCountsItTwice) {
    EXPECT_EQ(feed(range(65400, 65533)), range(65400, 65533));
    EXPECT_EQ(feed({65535, 0}), Numbers{});
    EXPECT_EQ(feed({1}), Numbers{1});
    EXPECT_EQ(feed({2, 3}), (Numbers{2, 3}));
}

TEST_F(ReorderBuffer, clearForgetsEverything) {
    feed({500, 502, 503});
    buffer.Clear();
    EXPECT_EQ(feed({501}), Numbers{501});
    EXPECT_EQ(feed({502}), Numbers{502});
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
}  // namespace mvrtpfec::testing
