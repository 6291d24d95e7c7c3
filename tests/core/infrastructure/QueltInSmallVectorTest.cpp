#include "infrastructure/QueltInSmallVector.h"

#include "core/infrastructure/RandomNumbers.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

template <std::uint32_t Inline>
std::vector<int> contents(const QueltInSmallVector<int, Inline>& vector) {
    return {vector.begin(), vector.end()};
}

/// Does the same random operations on a small vector and on std::vector and compares after each.
template <std::uint32_t Inline>
void compareWithModel(unsigned int seed) {
    RandomNumbers random(seed);
    QueltInSmallVector<int, Inline> tested;
    std::vector<int> model;
    for (int step = 0; step < 2000; ++step) {
        const auto position = model.empty() ? 0U : random.below(model.size());
        switch (random.below(10)) {
        case 0:
        case 1:
        case 2:
            tested.push_back(step);
            model.push_back(step);
            break;
        case 3:
        case 4: {
            const std::uint32_t anywhere = random.below(model.size() + 1);
            tested.insert(anywhere, step);
            model.insert(model.begin() + anywhere, step);
            break;
        }
        case 5:
        case 6:
            if (!model.empty()) {
                tested.erase(position);
                model.erase(model.begin() + position);
            }
            break;
        case 7:
            if (!model.empty()) {
                tested.push_back(tested[position]); // its own value, perhaps while it grows
                model.push_back(int{model[position]});
                tested.insert(0, tested[position]);
                model.insert(model.begin(), int{model[position]});
            }
            break;
        case 8:
            if (random.onceIn(8)) {
                tested.truncate(position);
                model.resize(position);
            }
            break;
        default: {
            const QueltInSmallVector<int, Inline> copy(tested);
            QueltInSmallVector<int, Inline> assigned;
            assigned.push_back(-1);
            assigned = copy;
            tested.clear();
            ASSERT_TRUE(tested.empty());
            tested = assigned;
            break;
        }
        }
        ASSERT_EQ(contents(tested), model) << "step " << step;
        ASSERT_EQ(tested.size(), model.size());
        ASSERT_EQ(tested.empty(), model.empty());
    }
}

} // namespace

TEST(QueltInSmallVector, AgreesWithStdVector) {
    for (unsigned int seed = 1; seed <= 10; ++seed) {
        compareWithModel<1>(seed);
        compareWithModel<2>(seed);
        compareWithModel<4>(seed);
        compareWithModel<7>(seed);
    }
}

TEST(QueltInSmallVector, ShortOnesNeedNoMemoryOfTheirOwn) {
    QueltInArena arena;
    const QueltInArenaScope scope(arena);
    QueltInSmallVector<void*, 4> vector;
    for (int count = 0; count < 4; ++count) {
        vector.push_back(nullptr);
    }
    EXPECT_EQ(arena.bytesInUse(), 0U);
    vector.push_back(nullptr);
    EXPECT_GT(arena.bytesInUse(), 0U);
}

TEST(QueltInSmallVector, CopiesDoNotShare) {
    QueltInSmallVector<int, 2> original;
    for (int count = 0; count < 5; ++count) {
        original.push_back(count);
    }
    QueltInSmallVector<int, 2> copy(original);
    copy[0] = 100;
    copy.push_back(101);
    EXPECT_EQ(contents(original), (std::vector{0, 1, 2, 3, 4}));
    EXPECT_EQ(contents(copy), (std::vector{100, 1, 2, 3, 4, 101}));
}

TEST(QueltInSmallVector, AssigningToItselfChangesNothing) {
    QueltInSmallVector<int, 1> vector;
    vector.push_back(1);
    vector.push_back(2);
    const QueltInSmallVector<int, 1>& itself = vector;
    vector = itself;
    EXPECT_EQ(contents(vector), (std::vector{1, 2}));
}

TEST(QueltInSmallVector, RefusesMoreThanPositionsCanName) {
    QueltInSmallVector<int, 1> vector;
    vector.push_back(1);
    EXPECT_THROW(vector.reserve(std::size_t{1} << 31U), std::bad_array_new_length);
    EXPECT_EQ(contents(vector), (std::vector{1}));
}
