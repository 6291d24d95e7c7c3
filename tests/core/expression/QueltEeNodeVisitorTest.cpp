#include "expression/QueltEeNodeVisitor.h"

#include "core/expression/ExpressionSamples.h"

namespace {

/// Goes down through operators and tells how deep it came.
class Diver : public Recorder {
public:
    long visitAndOp(QueltEeAndOp& node) override { return dive(node); }
    long visitOrOp(QueltEeOrOp& node) override { return dive(node); }
    long visitNotOp(QueltEeNotOp& node) override { return dive(node); }
    long visitNotDomainOp(QueltEeNotDomainOp& node) override { return dive(node); }
    long visitTrue(QueltEeTrue& /*node*/) override {
        ++m_visited;
        return S_OK;
    }

    std::size_t m_visited = 0;

private:
    long dive(QueltEeOperator& node) {
        ++m_visited;
        return node.childrenAcceptVisitor(*this);
    }
};

} // namespace

TEST(QueltEeNodeVisitor, VisitsNestAsDeepAsTheLimit) {
    constexpr std::size_t limit = QueltEeNode::s_maxVisitDepth;
    const OwnedReference fitting = singleChain<QueltEeNotOp>(limit - 1); // and the leaf
    Diver diver;
    EXPECT_EQ(fitting->getNode()->acceptVisitor(diver), S_OK);
    EXPECT_EQ(diver.m_visited, limit);
}

TEST(QueltEeNodeVisitor, PastTheLimitTheVisitorIsNotCalled) {
    constexpr std::size_t limit = QueltEeNode::s_maxVisitDepth;
    const OwnedReference tooDeep = singleChain<QueltEeNotDomainOp>(limit);
    Diver diver;
    EXPECT_EQ(tooDeep->getNode()->acceptVisitor(diver), E_OUTOFMEMORY);
    EXPECT_EQ(diver.m_visited, limit);

    Diver again; // nothing of the failed visits is left on the thread
    EXPECT_EQ(singleIn(*tooDeep).getChildRef()->getNode()->acceptVisitor(again), S_OK);
    EXPECT_EQ(again.m_visited, limit);
}

TEST(QueltEeNodeVisitor, EveryClassOfNodeHasTheLimit) {
    Catalogue catalogue;
    const auto atTheBottom = [](OwnedReference bottom) {
        for (std::size_t level = 0; level < QueltEeNode::s_maxVisitDepth; ++level) {
            bottom = level % 2 == 0 ? allOf(std::move(bottom)) : anyOf(std::move(bottom));
        }
        return bottom;
    };
    const auto resultAbove = [&](OwnedReference bottom) {
        Diver diver;
        const OwnedReference tree = atTheBottom(std::move(bottom));
        const long result = tree->getNode()->acceptVisitor(diver);
        EXPECT_EQ(diver.m_visited, std::size_t{QueltEeNode::s_maxVisitDepth});
        EXPECT_TRUE(diver.m_visits.empty());
        return result;
    };
    EXPECT_EQ(resultAbove(always()), E_OUTOFMEMORY);
    EXPECT_EQ(resultAbove(never()), E_OUTOFMEMORY);
    EXPECT_EQ(resultAbove(allOf()), E_OUTOFMEMORY);
    EXPECT_EQ(resultAbove(anyOf()), E_OUTOFMEMORY);
    EXPECT_EQ(resultAbove(held(new QueltEeNotOp)), E_OUTOFMEMORY);
    EXPECT_EQ(resultAbove(held(new QueltEeNotDomainOp)), E_OUTOFMEMORY);
    EXPECT_EQ(resultAbove(held(new QueltEeEffLeaf(nullptr, nullptr))), E_OUTOFMEMORY);
    EXPECT_EQ(resultAbove(leafOf(nullptr)), E_OUTOFMEMORY);
    EXPECT_EQ(resultAbove(held(new QueltEeRestrictionEffLeaf("x"))), E_OUTOFMEMORY);
}
