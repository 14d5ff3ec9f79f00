#include "core/sequence_set.h"

#include <algorithm>
#include <memory>
#include <set>

#include <gtest/gtest.h>

#include "tests/shared/random.h"

namespace mvrtpfec {
namespace {

using Numbers = std::set<std::uint32_t>;

/// Numbers near the borders of words, of their summary and of the range, and others.
std::uint32_t drawNumber(Random& random, std::uint32_t end) {
    const std::uint32_t border = random.below(17) * 4096;
    switch (random.below(3)) {
        case 0:
            return random.below(end);
        case 1:
            return std::min(random.below(1024) * 64 + random.below(2), end - 1);
        default:
            return std::min(border > 2 ? border - 2 + random.below(4) : random.below(70), end - 1);
    }
}

std::size_t eraseBetween(Numbers& numbers, std::uint32_t first, std::uint32_t last) {
    if (first >= last) return 0;
    const std::size_t before = numbers.size();
    numbers.erase(numbers.lower_bound(first), numbers.lower_bound(last));
    return before - numbers.size();
}

void expectSameMembers(const SequenceSet& set, const Numbers& numbers) {
    std::uint32_t from = 0;
    for (const std::uint32_t number : numbers) {
        ASSERT_EQ(set.next(from), number);
        from = number + 1;
    }
    ASSERT_EQ(set.next(from), SequenceSet::end);
}

TEST(SequenceSet, behavesAsAnOrderedSet) {
    Random random(7);
    const auto set = std::make_unique<SequenceSet>();
    Numbers numbers;
    for (int step = 0; step < 30000; ++step) {
        const auto number = static_cast<std::uint16_t>(drawNumber(random, 65536));
        const std::uint32_t first = drawNumber(random, 65537);
        const std::uint32_t last =
            random.chance(0.5) ? drawNumber(random, 65537) : std::min(first + random.below(200), 65536u);
        switch (random.below(20)) {
            case 0:
                if (numbers.size() > 20000) break;
                set->insertRange(first, std::max(first, last));
                for (std::uint32_t n = first; n < last; ++n) numbers.insert(n);
                break;
            case 1:
                ASSERT_EQ(set->eraseRange(first, std::max(first, last)), eraseBetween(numbers, first, last));
                break;
            case 2:
            case 3:
            case 4:
            case 5:
                ASSERT_EQ(set->erase(number), numbers.erase(number) == 1);
                break;
            default:
                ASSERT_EQ(set->insert(number), numbers.insert(number).second);
                break;
        }
        ASSERT_EQ(set->size(), numbers.size()) << "step " << step;
        ASSERT_EQ(set->empty(), numbers.empty());
        ASSERT_EQ(set->contains(number), numbers.contains(number));
        const auto next = numbers.lower_bound(first);
        ASSERT_EQ(set->next(first), next == numbers.end() ? SequenceSet::end : *next) << "step " << step;
        if (step % 5000 == 0) expectSameMembers(*set, numbers);
    }
}

TEST(SequenceSet, holdsEveryNumberAtOnce) {
    const auto set = std::make_unique<SequenceSet>();
    set->insertRange(0, 65536);
    EXPECT_EQ(set->size(), 65536u);
    EXPECT_EQ(set->next(65535), 65535u);
    EXPECT_EQ(set->next(65536), SequenceSet::end);
    EXPECT_EQ(set->eraseRange(1, 65535), 65534u);
    EXPECT_EQ(set->next(1), 65535u);
    EXPECT_EQ(set->eraseRange(0, 65536), 2u);
    EXPECT_TRUE(set->empty());
}

}  // namespace
}  // namespace mvrtpfec
