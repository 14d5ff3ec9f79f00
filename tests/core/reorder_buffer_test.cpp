#include "core/reorder_buffer.h"

#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/model/reorder_buffer.h"
#include "tests/shared/message_of.h"
#include "tests/shared/random.h"

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
    EXPECT_EQ(messageOf([&] { small.Push(100); }), "Invalid sequence number : 100. Max allowed : 99");
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
    EXPECT_EQ(messageOf([] { Buffer(32768, 65535, nullptr); }),
              "Packet reorder buffer size must be less than half the max sequence number");
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

struct Totals {
    int popped = 0, resynchronisations = 0, overflows = 0, wraps = 0;
};

/// Numbers that mostly rise by one, with holes, late ones, repeats and jumps.
class NumberSource {
public:
    NumberSource(Random& random, std::int32_t modulus)
        : random_(random), modulus_(modulus), next_(random.below(static_cast<std::uint32_t>(modulus))) {
        disorder_ = random.unit() * 0.3;
        jumps_ = random.chance(0.3) ? 0.01 : 0;
    }

    std::int32_t draw() {
        if (random_.chance(jumps_)) next_ = random_.below(static_cast<std::uint32_t>(modulus_));
        if (random_.chance(disorder_)) return strayNumber();
        return wrapped(next_++);
    }

private:
    std::int32_t strayNumber() {
        switch (random_.below(3)) {
            case 0:
                next_ += random_.below(3);
                return wrapped(next_++);
            case 1:
                return wrapped(next_ - 1 - random_.below(50));
            default:
                return wrapped(next_ + random_.below(50));
        }
    }
    std::int32_t wrapped(std::int64_t number) const {
        return static_cast<std::int32_t>(((number % modulus_) + modulus_) % modulus_);
    }

    Random& random_;
    std::int32_t modulus_;
    std::int64_t next_;
    double disorder_, jumps_;
};

void runStream(std::uint64_t seed, Totals& totals) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    const std::int32_t capacity = random.chance(0.5) ? 20 : static_cast<std::int32_t>(1 + random.below(30));
    const std::int32_t maximum =
        random.chance(0.5) ? 65535 : 2 * capacity + static_cast<std::int32_t>(random.below(300));
    CRtpPacketReorderBuffer<std::int32_t> core(capacity, maximum, [](std::int32_t number) { return number; });
    model::ReorderBuffer model(capacity, maximum);
    NumberSource numbers(random, maximum + 1);
    const bool popsAll = random.chance(0.8);
    for (int step = 0; step < 600; ++step) {
        const std::int32_t number = numbers.draw();
        core.Push(number);
        model.push(number);
        for (bool more = popsAll || random.chance(0.7); more; more = more && popsAll) {
            std::int32_t item = -1;
            more = core.Pop(item);
            const auto expected = model.pop();
            ASSERT_EQ(more, expected.has_value()) << "step " << step;
            ASSERT_EQ(item, expected.value_or(-1)) << "step " << step;
            totals.popped += more;
        }
        if (random.chance(0.001)) {
            core.Clear();
            model.clear();
        }
    }
    totals.resynchronisations += model.resynchronisations();
    totals.overflows += model.overflows();
    totals.wraps += model.wraps();
}

TEST(ReorderBufferDifferential, randomStreams) {
    Totals totals;
    for (std::uint64_t seed = 1; seed <= 2000 && !HasFailure(); ++seed) runStream(seed, totals);
    EXPECT_GT(totals.popped, 300000);
    EXPECT_GT(totals.resynchronisations, 3000);
    EXPECT_GT(totals.overflows, 3000);
    EXPECT_GT(totals.wraps, 2000);
}

}  // namespace
}  // namespace mvrtpfec
