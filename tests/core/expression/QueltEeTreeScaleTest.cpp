// Trees of any depth and width: every walk uses bounded stack, and building and taking apart take time in the
// size of the tree. A walk that recursed would end the program, one that looked at everything again and again
// would not come back.

#include "core/expression/ExpressionSamples.h"
#include "core/support/Effort.h"

#include "expression/QueltEVCClassification.h"

namespace {

constexpr std::size_t s_many = effort(1'000'000);

/// What the classifier says of the tree.
std::string classify(const QueltEeNodeRef& reference) {
    QueltCoreEVC_NodeClassifier classifier;
    QueltEVCClassification classification(0);
    const long result = classifier.classify(reference, classification);
    return result == S_OK ? textOf(classification) : std::to_string(result);
}

/// Checks a tree against its text: printing, cloning (and printing the clone), classifying, deleting.
void expectAllWalks(OwnedReference tree, const std::string& text, const std::string& kinds) {
    EXPECT_TRUE(textOf(*tree) == text); // a difference in millions of characters is nothing to print
    EXPECT_EQ(classify(*tree), kinds);
    OwnedReference copy(tree->getNode()->clone());
    tree.reset();
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(textOf(*copy) == text);
    EXPECT_EQ(classify(*copy), kinds);
}

std::string repeated(std::string_view text, std::size_t times) {
    std::string result;
    result.reserve(text.size() * times);
    for (std::size_t count = 0; count < times; ++count) {
        result += text;
    }
    return result;
}

/// A NOT that counts how often somebody looks for its child.
class WatchedNot : public QueltEeNotOp {
public:
    explicit WatchedNot(std::size_t& looks) : m_looks(looks) {}
    QueltEeNodeRef* getChildRef() const override {
        ++m_looks;
        return QueltEeNotOp::getChildRef();
    }

private:
    std::size_t& m_looks;
};

} // namespace

TEST(QueltEeTreeScale, ADeepChainOfSingleOperators) {
    expectAllWalks(singleChain<QueltEeNotOp>(s_many),
                   repeated("NOT(", s_many) + "TRUE" + std::string(s_many, ')'), "none");
}

TEST(QueltEeTreeScale, ADeepChainOfGroupsBuiltFromTheTop) {
    OwnedReference root = allOf();
    QueltEeGroupOp* bottom = &groupIn(*root);
    for (std::size_t level = 1; level < s_many; ++level) {
        auto* const next = level % 2 == 0 ? static_cast<QueltEeGroupOp*>(new QueltEeAndOp) : new QueltEeOrOp;
        ASSERT_EQ(bottom->addChild(*next), S_OK);
        bottom = next;
    }
    ASSERT_EQ(bottom->addChild(*new QueltEeVarEffLeaf(Catalogue::secondMinute())), S_OK);
    expectAllWalks(std::move(root),
                   repeated("AND(OR(", s_many / 2) + textOf(*leafOf(Catalogue::secondMinute())) +
                       std::string(s_many, ')'),
                   "history");
}

TEST(QueltEeTreeScale, PartsMayBeAddedAtTheBottomOfADeepTree) {
    // Each part has children of its own, so that it could stand above; only few nodes below it tell that it
    // does not.
    constexpr std::size_t depth = s_many / 5;
    OwnedReference root = allOf();
    QueltEeGroupOp* bottom = &groupIn(*root);
    for (std::size_t level = 0; level < depth; ++level) {
        OwnedReference part = anyOf(always(), never());
        QueltEeGroupOp* const next = &groupIn(*part);
        ASSERT_EQ(bottom->addChild(*part.release()->getNode()), S_OK);
        bottom = next;
    }
    expectAllWalks(std::move(root),
                   "AND(" + repeated("OR(TRUE, FALSE, ", depth - 1) + "OR(TRUE, FALSE" +
                       std::string(depth + 1, ')'),
                   "none");
}

TEST(QueltEeTreeScale, DeepTreesMayBeJoinedAndWillNotStandAboveThemselves) {
    const OwnedReference upper = singleChain<QueltEeNotOp>(s_many / 2);
    OwnedReference lower = singleChain<QueltEeNotOp>(s_many / 2);
    QueltEeSingleOp* bottom = &singleIn(*upper);
    while (QueltEeSingleOp* const next = QueltEeSingleOp::cast(bottom->getChildRef()->getNode())) {
        bottom = next;
    }
    ASSERT_EQ(bottom->setChildRef(*lower.release()), S_OK);
    EXPECT_EQ(bottom->setChildRef(*upper), E_INVALIDARG);
    EXPECT_TRUE(textOf(*upper) == repeated("NOT(", s_many) + "TRUE" + std::string(s_many, ')'));
}

TEST(QueltEeTreeScale, AChainOfAliases) {
    // Every group belongs to the test, and is aliased by the one before it.
    std::vector<OwnedReference> groups;
    groups.reserve(s_many);
    groups.push_back(allOf());
    while (groups.size() < s_many) {
        OwnedReference next = allOf();
        ASSERT_EQ(groupIn(*groups.back()).getChildren().PutBack(*QueltEeNodeRef::makeAlias(*next->getNode())),
                  S_OK);
        groups.push_back(std::move(next));
    }
    EXPECT_EQ(groupIn(*groups.back()).addChild(*groups.front()->getNode()), E_INVALIDARG);
    EXPECT_TRUE(textOf(*groups.front()) == repeated("AND(", s_many) + std::string(s_many, ')'));
    {
        const OwnedReference copy(groups.front()->getNode()->clone());
        EXPECT_TRUE(textOf(*copy) == textOf(*groups.front()));
    }
    EXPECT_EQ(classify(*groups.front()), "none");
    ASSERT_EQ(groupIn(*groups.back()).addChild(*new QueltEeVarEffLeaf(Catalogue::secondMinute())), S_OK);
    EXPECT_EQ(classify(*groups.front()), "history");
    groups.pop_back(); // the last one that is aliased
    EXPECT_EQ(classify(*groups.front()), std::to_string(E_POINTER));
    while (groups.size() > s_many / 2) {
        groups.pop_back(); // from the bottom
    }
    EXPECT_TRUE(textOf(*groups.front()) ==
                repeated("AND(", s_many / 2) + "null" + std::string(s_many / 2, ')'));
    groups.clear(); // from the top
}

TEST(QueltEeTreeScale, AWideGroup) {
    OwnedReference root = notOf(anyOf());
    QueltEeGroupOp& wide = groupIn(*singleIn(*root).getChildRef());
    for (std::size_t count = 0; count < s_many; ++count) {
        ASSERT_EQ(wide.addChild(*new QueltEeTrue), S_OK);
    }
    expectAllWalks(std::move(root), "NOT(OR(" + repeated("TRUE, ", s_many - 1) + "TRUE))", "none");
}

TEST(QueltEeTreeScale, AWideGroupOfOperators) {
    constexpr std::size_t width = s_many / 5;
    OwnedReference root = allOf(anyOf());
    QueltEeGroupOp& wide = groupIn(childOf(groupIn(*root), 0));
    for (std::size_t count = 0; count < width; ++count) {
        ASSERT_EQ(wide.addChild(*notOf(always()).release()->getNode()), S_OK);
    }
    expectAllWalks(std::move(root), "AND(OR(" + repeated("NOT(TRUE), ", width - 1) + "NOT(TRUE)))", "none");
}

TEST(QueltEeTreeScale, ManyAliasesOfOneNode) {
    OwnedReference shared = always();
    const OwnedReference wide = anyOf();
    for (std::size_t count = 0; count < s_many; ++count) {
        ASSERT_EQ(groupIn(*wide).getChildren().PutBack(*QueltEeNodeRef::makeAlias(*shared->getNode())), S_OK);
    }
    EXPECT_EQ(classify(*wide), "none");
    shared.reset();
    EXPECT_EQ(classify(*wide), std::to_string(E_POINTER));
    EXPECT_TRUE(textOf(*wide) == "OR(" + repeated("null, ", s_many - 1) + "null)");
}

TEST(QueltEeTreeScale, ManyWaysToOneNodeAreGoneOnce) {
    // Each group holds the next one twice, as its own and as an alias: 2^60 ways from the first to the last.
    constexpr std::size_t depth = 60;
    const OwnedReference root = allOf();
    std::vector<QueltEeGroupOp*> groups{&groupIn(*root)};
    while (groups.size() < depth) {
        auto* const next = new QueltEeAndOp;
        ASSERT_EQ(groups.back()->addChild(*next), S_OK);
        ASSERT_EQ(groups.back()->addChild(*next), S_OK);
        groups.push_back(next);
    }
    EXPECT_EQ(classify(*root), "none");
    ASSERT_EQ(groups.back()->addChild(*new QueltEeVarEffLeaf(Catalogue::secondMinute())), S_OK);
    EXPECT_EQ(classify(*root), "history");
    EXPECT_TRUE(groups.front()->isAtOrAbove(*groups.back()));
    EXPECT_FALSE(groups.back()->isAtOrAbove(*groups.front()));
    const OwnedReference stranger = allOf(always());
    EXPECT_FALSE(stranger->getNode()->isAtOrAbove(*groups.back()));
    EXPECT_FALSE(groups.front()->isAtOrAbove(*stranger->getNode()));
}

TEST(QueltEeTreeScale, ClassifyingAtEveryLevelLooksAtEachNodeAFewTimes) {
    // What a visitor does that classifies each node that it comes to.
    constexpr std::size_t depth = 100'000;
    std::size_t looks = 0;
    OwnedReference chain = always();
    std::vector<const QueltEeNodeRef*> levels{chain.get()};
    for (std::size_t level = 0; level < depth; ++level) {
        auto* const operation = new WatchedNot(looks);
        ASSERT_EQ(operation->setChildRef(*chain.release()), S_OK);
        chain.reset(operation->getNodeRef());
        levels.push_back(chain.get());
    }
    looks = 0;
    for (std::size_t level = levels.size(); level-- > 0;) {
        ASSERT_EQ(classify(*levels[level]), "none");
    }
    EXPECT_GE(looks, depth);
    EXPECT_LE(looks, 2 * depth);
}
