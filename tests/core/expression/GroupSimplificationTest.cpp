// The simplifications of groups, with random groups: that each does what its name says and nothing else, and
// that the group means the same afterwards.

#include "core/support/Effort.h"
#include "core/support/RandomExpressions.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr int s_rounds = effort(15000);

/// What a child of a group is, as the simplifications see it.
enum class Kind { isTrue, isFalse, other };

Kind kindOf(const QueltEeNode& node) {
    if (QueltEeTrue::isObjectOfThisType(node) != 0) {
        return Kind::isTrue;
    }
    return QueltEeFalse::isObjectOfThisType(node) != 0 ? Kind::isFalse : Kind::other;
}

/// The same, with leaves that are always or never true taken for the constants.
Kind kindWithLeaves(const QueltEeNode& node) {
    const auto* const leaf = dynamic_cast<const QueltEeVarEffLeaf*>(&node);
    if (leaf == nullptr || leaf->getVarEff() == nullptr) {
        return kindOf(node);
    }
    if (isConstant(*leaf->getVarEff(), true)) {
        return Kind::isTrue;
    }
    return isConstant(*leaf->getVarEff(), false) ? Kind::isFalse : Kind::other;
}

/// A random group below its reference, with what it was made of.
struct Sample {
    OwnedReference reference;
    bool isAnd;
    std::string text;
    std::vector<const QueltEeNode*> children;
    std::vector<Kind> kinds;           // of the children
    std::vector<Kind> kindsWithLeaves; // the same, leaves counted
    std::vector<SampleConfiguration> configurations;
    std::vector<bool> values; // in them

    [[nodiscard]] QueltEeGroupOp& group() const { return groupIn(*reference); }
    [[nodiscard]] const std::vector<Kind>& kindsFor(E_MakeTF makeTF) const {
        return makeTF == E_DoMakeTF ? kindsWithLeaves : kinds;
    }
    [[nodiscard]] Kind strong() const { return isAnd ? Kind::isFalse : Kind::isTrue; }
    [[nodiscard]] Kind weak() const { return isAnd ? Kind::isTrue : Kind::isFalse; }
    [[nodiscard]] bool has(Kind kind, E_MakeTF makeTF) const {
        return std::ranges::count(kindsFor(makeTF), kind) > 0;
    }
};

class GroupSamples {
public:
    explicit GroupSamples(std::uint32_t seed) : m_random(m_world, seed) {}

    Sample next() {
        Sample sample;
        const bool isAnd = m_random.random().flip();
        sample.reference = isAnd ? allOf() : anyOf();
        sample.isAnd = isAnd;
        for (unsigned int count = m_random.random().below(4); count > 0; --count) {
            EXPECT_EQ(sample.group().addChild(*m_random.tree(m_shape).release()->getNode()), S_OK);
        }
        describe(sample);
        return sample;
    }

private:
    void describe(Sample& sample) {
        sample.text = textOf(*sample.reference);
        for (QueltInObject* const child : sample.group().getChildren().elements()) {
            const QueltEeNode* const node = dynamic_cast<QueltEeNodeRef&>(*child).getNode();
            sample.children.push_back(node);
            sample.kinds.push_back(kindOf(*node));
            sample.kindsWithLeaves.push_back(kindWithLeaves(*node));
        }
        for (int count = 0; count < 6; ++count) {
            sample.configurations.push_back(m_random.configuration());
            sample.values.push_back(
                PlainMeaning(sample.configurations.back()).holds(*sample.reference->getNode()));
        }
    }

    SampleWorld m_world;
    RandomExpressions m_random;
    TreeShape m_shape{2, 2, true, false, false};
};

void expectSameMeaning(const Sample& sample) {
    for (std::size_t at = 0; at < sample.configurations.size(); ++at) {
        ASSERT_EQ(PlainMeaning(sample.configurations[at]).holds(*sample.reference->getNode()),
                  sample.values[at])
            << sample.text << " became " << textOf(*sample.reference);
    }
}

void expectUntouched(const Sample& sample) {
    ASSERT_EQ(textOf(*sample.reference), sample.text);
    ASSERT_EQ(sample.group().getChildren().GetLength(), static_cast<int>(sample.children.size()));
    for (std::size_t at = 0; at < sample.children.size(); ++at) {
        ASSERT_EQ(childOf(sample.group(), static_cast<unsigned int>(at)).getNode(), sample.children[at]);
    }
}

/// The group has these of its former children, in order; leaves that were to become constants have become
/// those.
void expectChildren(const Sample& sample, E_MakeTF makeTF, const std::vector<std::size_t>& expected) {
    ASSERT_EQ(sample.group().getChildren().GetLength(), static_cast<int>(expected.size())) << sample.text;
    for (std::size_t at = 0; at < expected.size(); ++at) {
        const QueltEeNode* const child = childOf(sample.group(), static_cast<unsigned int>(at)).getNode();
        ASSERT_EQ(kindOf(*child), sample.kindsFor(makeTF)[expected[at]]) << sample.text;
        if (sample.kinds[expected[at]] == sample.kindsFor(makeTF)[expected[at]]) {
            ASSERT_EQ(child, sample.children[expected[at]]) << sample.text;
        }
    }
}

void expectConstant(const Sample& sample, Kind kind) {
    ASSERT_EQ(kindOf(*sample.reference->getNode()), kind) << sample.text;
}

void expectOnlyChild(const Sample& sample) {
    ASSERT_EQ(sample.reference->getNode(), sample.children.front()) << sample.text;
    ASSERT_EQ(sample.reference->getNode()->getNodeRef(), sample.reference.get());
}

std::vector<std::size_t> allPositions(const Sample& sample) {
    std::vector<std::size_t> positions(sample.children.size());
    for (std::size_t at = 0; at < positions.size(); ++at) {
        positions[at] = at;
    }
    return positions;
}

/// How often a simplification did something, and how often not; both must have been tried.
struct Tried {
    int done = 0;
    int notDone = 0;
    void count(bool isDone) { ++(isDone ? done : notDone); }
    ~Tried() {
        EXPECT_GT(done, s_rounds / 50);
        EXPECT_GT(notDone, s_rounds / 50);
    }
};

class GroupSimplification : public testing::TestWithParam<E_MakeTF> {};

} // namespace

TEST(GroupSimplification, BecomesItsSingleChild) {
    GroupSamples samples(31);
    Tried tried;
    for (int round = 0; round < s_rounds; ++round) {
        const Sample sample = samples.next();
        const bool isToBeDone = sample.children.size() == 1;
        tried.count(isToBeDone);
        ASSERT_EQ(sample.group().becomeIfSingleChild() != 0, isToBeDone) << sample.text;
        ASSERT_NO_FATAL_FAILURE(isToBeDone ? expectOnlyChild(sample) : expectUntouched(sample));
        ASSERT_NO_FATAL_FAILURE(expectSameMeaning(sample));
    }
}

TEST(GroupSimplification, BecomesItsNeutralConstantWithoutChildren) {
    GroupSamples samples(32);
    Tried tried;
    for (int round = 0; round < s_rounds; ++round) {
        const Sample sample = samples.next();
        const bool isToBeDone = sample.children.empty();
        tried.count(isToBeDone);
        ASSERT_EQ(sample.group().becomeIfNoChild() != 0, isToBeDone) << sample.text;
        ASSERT_NO_FATAL_FAILURE(isToBeDone ? expectConstant(sample, sample.weak()) : expectUntouched(sample));
        ASSERT_NO_FATAL_FAILURE(expectSameMeaning(sample));
    }
}

TEST(GroupSimplification, BecomesItsSingleChildOrItsNeutralConstant) {
    GroupSamples samples(33);
    Tried tried;
    for (int round = 0; round < s_rounds; ++round) {
        const Sample sample = samples.next();
        const bool isToBeDone = sample.children.size() <= 1;
        tried.count(isToBeDone);
        ASSERT_EQ(sample.group().becomeIfNoOrSingleChild() != 0, isToBeDone) << sample.text;
        if (sample.children.empty()) {
            ASSERT_NO_FATAL_FAILURE(expectConstant(sample, sample.weak()));
        } else {
            ASSERT_NO_FATAL_FAILURE(isToBeDone ? expectOnlyChild(sample) : expectUntouched(sample));
        }
        ASSERT_NO_FATAL_FAILURE(expectSameMeaning(sample));
    }
}

TEST_P(GroupSimplification, TellsWhetherItHasAStrongNode) {
    const E_MakeTF makeTF = GetParam();
    GroupSamples samples(34);
    Tried tried;
    for (int round = 0; round < s_rounds; ++round) {
        const Sample sample = samples.next();
        const bool isExpected = sample.has(sample.strong(), makeTF);
        tried.count(isExpected);
        ASSERT_EQ(sample.group().hasStrongNode(makeTF) != 0, isExpected) << sample.text;
        ASSERT_NO_FATAL_FAILURE(expectChildren(sample, makeTF, allPositions(sample)));
        ASSERT_NO_FATAL_FAILURE(expectSameMeaning(sample));
        if (makeTF == E_DoNotMakeTF) {
            ASSERT_NO_FATAL_FAILURE(expectUntouched(sample));
        }
    }
}

TEST_P(GroupSimplification, BecomesItsStrongNode) {
    const E_MakeTF makeTF = GetParam();
    GroupSamples samples(35);
    Tried tried;
    for (int round = 0; round < s_rounds; ++round) {
        const Sample sample = samples.next();
        const bool isToBeDone = sample.has(sample.strong(), makeTF);
        tried.count(isToBeDone);
        ASSERT_EQ(sample.group().becomeIfHasStrongNode(makeTF) != 0, isToBeDone) << sample.text;
        if (isToBeDone) {
            ASSERT_NO_FATAL_FAILURE(expectConstant(sample, sample.strong()));
        } else {
            ASSERT_NO_FATAL_FAILURE(expectChildren(sample, makeTF, allPositions(sample)));
        }
        ASSERT_NO_FATAL_FAILURE(expectSameMeaning(sample));
    }
}

TEST_P(GroupSimplification, RemovesWeakNodes) {
    const E_MakeTF makeTF = GetParam();
    GroupSamples samples(36);
    Tried tried;
    for (int round = 0; round < s_rounds; ++round) {
        const Sample sample = samples.next();
        const bool isToBeDone = sample.has(sample.weak(), makeTF);
        tried.count(isToBeDone);
        std::vector<std::size_t> kept = allPositions(sample);
        std::erase_if(kept, [&](std::size_t at) { return sample.kindsFor(makeTF)[at] == sample.weak(); });
        ASSERT_EQ(sample.group().removeWeakNodes(makeTF) != 0, isToBeDone) << sample.text;
        ASSERT_NO_FATAL_FAILURE(expectChildren(sample, makeTF, kept));
        ASSERT_NO_FATAL_FAILURE(expectSameMeaning(sample));
    }
}

INSTANTIATE_TEST_SUITE_P(MakeTF, GroupSimplification, testing::Values(E_DoNotMakeTF, E_DoMakeTF));
