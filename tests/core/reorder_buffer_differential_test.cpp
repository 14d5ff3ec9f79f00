#include <gtest/gtest.h>

#include "core/reorder_buffer.h"
#include "tests/model/reorder_buffer.h"
#include "tests/shared/random.h"

namespace mvrtpfec {
namespace {

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
