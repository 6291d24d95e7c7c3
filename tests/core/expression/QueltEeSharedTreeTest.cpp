// What many threads may do with one tree, and what an arena does with trees that nobody deletes.

#include "core/expression/ExpressionSamples.h"

#include "expression/QueltEVCClassification.h"
#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "infrastructure/QueltInMemory.h"

#include <thread>

namespace {

class QueltEeSharedTreeTest : public testing::Test {
protected:
    /// A tree with every class of node that can be classified, wider than what groups hold without memory of
    /// their own.
    [[nodiscard]] OwnedReference sampleTree() {
        OwnedReference tree = allOf();
        for (int count = 0; count < 20; ++count) {
            const OwnedReference part = anyOf(
                leafOf(m_catalogue.engineIn({"V6", "V8"})), notOf(leafOf(m_catalogue.unitIn(count, 100))),
                held(new QueltEeEffLeaf(&m_catalogue.change, &m_catalogue.truck)), always());
            QueltEeNodeRef* const copy = part->getNode()->clone();
            EXPECT_EQ(groupIn(*tree).addChild(*copy->getNode()), S_OK);
        }
        return tree;
    }

    Catalogue m_catalogue;
};

/// Goes all the way down.
class Wanderer : public Recorder {
public:
    long visitAndOp(QueltEeAndOp& node) override { return node.childrenAcceptVisitor(*this); }
    long visitOrOp(QueltEeOrOp& node) override { return node.childrenAcceptVisitor(*this); }
    long visitNotOp(QueltEeNotOp& node) override { return node.childrenAcceptVisitor(*this); }
};

} // namespace

TEST_F(QueltEeSharedTreeTest, ManyThreadsMayReadOneTree) {
    const OwnedReference tree = sampleTree();
    const OwnedReference second = sampleTree();
    const std::string text = textOf(*second);
    std::vector<std::thread> threads;
    for (int count = 0; count < 4; ++count) {
        threads.emplace_back([&] {
            for (int round = 0; round < 20; ++round) {
                QueltCoreEVC_NodeClassifier classifier;
                QueltEVCClassification classification(0);
                EXPECT_EQ(classifier.classify(*tree, classification),
                          S_OK); // the first ones at the same time
                EXPECT_EQ(textOf(classification), "evolution, variant, change");
                EXPECT_EQ(textOf(*tree), text);
                const OwnedReference copy(tree->getNode()->clone());
                EXPECT_EQ(textOf(*copy), text);
                QueltInLinkList children(QueltEeNodeRef::sType());
                groupIn(*tree).getChildrenRefs(children);
                EXPECT_EQ(children.GetLength(), 20);
                Wanderer wanderer;
                EXPECT_EQ(tree->getNode()->acceptVisitor(wanderer), S_OK);
                EXPECT_EQ(wanderer.m_visits.size(), 80U);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(QueltEeSharedTreeTest, ManyThreadsMayReadOneExpression) {
    auto* const list = new QueltQmSpecList;
    QueltEeVarEff* criterion = m_catalogue.unitIn(1, 2);
    EXPECT_EQ(list->addVarEff(criterion), S_OK);
    EXPECT_EQ(list->getNamedEffectivities().Put(m_catalogue.change), 1);
    const QueltEeFilterExpression filter(&m_catalogue.truck, list);
    const QueltEeGenericExpression generic(sampleTree().release());
    std::vector<std::thread> threads;
    for (int count = 0; count < 4; ++count) {
        threads.emplace_back([&] {
            Wanderer wanderer;
            EXPECT_EQ(filter.runConstVisitor(wanderer), S_OK);
            EXPECT_EQ(wanderer.m_visits.size(), 2U);
            EXPECT_EQ(generic.runConstVisitor(wanderer), S_OK);
            EXPECT_EQ(textOf(filter), "filter(Truck: all: Unit in [1, 2), eff(ECO-1))");
            const OwnedReference tree(filter.makeTree());
            EXPECT_EQ(textOf(*tree), "AND(Unit in [1, 2), eff(ECO-1, Truck))");
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(QueltEeSharedTreeTest, AnArenaReturnsWhatIsLeftToNobody) {
    QueltInArena arena;
    for (int round = 0; round < 3; ++round) {
        {
            const QueltInArenaScope scope(arena);
            QueltEeNodeRef* const tree = sampleTree().release();
            QueltEeNodeRef* const copy = tree->getNode()->clone();
            EXPECT_EQ(groupIn(*copy).addChild(*new Unique), S_OK);
            EXPECT_EQ(copy->getNode()->clone(), nullptr); // fails when most of it is made
            EXPECT_EQ(groupIn(*tree).addChild(*groupIn(*copy).getNodeRef()->getNode()), S_OK);
            EXPECT_EQ(groupIn(*copy).addChild(*tree->getNode()), E_INVALIDARG);
            static_cast<void>(QueltEeNodeRef::makeAlias(*tree->getNode()));

            auto* const list = new QueltQmSpecList;
            for (int count = 0; count < 40; ++count) {
                QueltEeVarEff* criterion = m_catalogue.unitIn(count, count + 1);
                EXPECT_EQ(list->addVarEff(criterion), S_OK);
            }
            EXPECT_EQ(list->getNamedEffectivities().Put(m_catalogue.basic), 1);
            auto* const filter = new QueltEeFilterExpression(nullptr, list);
            Recorder recorder;
            EXPECT_EQ(filter->runVisitor(recorder), S_OK);

            auto* const expression = new QueltEeEffectivityExpression;
            for (std::uint8_t number = 0; number < 20; ++number) {
                const auto* const dictionary = new QueltEeModelDico("D", guidOf(number));
                QueltEeNodeRef* own = always().release();
                auto* const criteria = new QueltEeMultiModelExpression::ModelCriteria(nullptr, &own);
                EXPECT_EQ(expression->setModelCriteria(*dictionary, criteria), S_OK);
                QueltInObject* object = &m_catalogue.change;
                EXPECT_EQ(expression->addOperation(QueltEeExpressionOperation::OperationKind::apply, object),
                          S_OK);
            }
            const std::string text = textOf(*expression);
            EXPECT_NE(text.find("operations: 1 ECO-1"), std::string::npos);
        }
        EXPECT_GT(arena.bytesInUse(), 0U);
        arena.reset(); // the leak check tells what was made elsewhere
        EXPECT_EQ(arena.bytesInUse(), 0U);
    }
}

TEST_F(QueltEeSharedTreeTest, TreesMayAlsoBeDeletedInsideAnArena) {
    QueltInArena arena;
    OwnedReference outside = sampleTree();
    int alive = 0;
    {
        const QueltInArenaScope scope(arena);
        const OwnedReference inside = sampleTree();
        EXPECT_EQ(groupIn(*inside).addChild(*new Counted<QueltEeTrue>(alive)), S_OK);
        EXPECT_EQ(alive, 1);
        outside.reset();
    }
    EXPECT_EQ(alive, 0);
}
