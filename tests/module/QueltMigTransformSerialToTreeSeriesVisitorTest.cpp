#include "QueltMigTransformSerialToTreeSeriesVisitor.h"

#include "module/support/BranchingWorld.h"

#include "infrastructure/QueltInSerialInterval.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

namespace {

using namespace quelt::test;
using Visitor = QueltMigTransformSerialToTreeSeriesVisitor;
using Interval = QueltEeSerialEff::Interval;
using OwnedTree = std::unique_ptr<QueltEeNodeRef>;

constexpr int s_open = 2000000000;
constexpr const char* s_noElement = "ERROR : No tree element found for this sequence number : ";

class Branching : public testing::Test {
protected:
    struct Outcome {
        long result = S_OK;
        bool single = false;
        Messages errors;
        std::string text;
    };
    /// Visits the tree with a new visitor; says what came of it.
    Outcome visit(QueltEeNode& root) {
        Outcome outcome;
        const CapturedErrors captured;
        Visitor visitor(world.context);
        outcome.result = root.acceptVisitor(visitor);
        outcome.single = visitor.singleSelectionMade() != 0;
        outcome.errors = captured.texts();
        outcome.text = textOf(root);
        return outcome;
    }
    /// The same for a leaf on `effectivity`.
    Outcome branch(QueltEeVarEff* effectivity) {
        const OwnedTree tree((new QueltEeVarEffLeaf(effectivity))->getNodeRef());
        return visit(*tree->getNode());
    }
    /// A leaf on `effectivity` must fail and keep what it holds.
    void expectFailure(QueltEeVarEff* effectivity, long result, const Messages& errors, bool single = false) {
        const std::string before = textOf(*effectivity);
        SCOPED_TRACE(before);
        const OwnedTree tree((new QueltEeVarEffLeaf(effectivity))->getNodeRef());
        const Outcome outcome = visit(*tree->getNode());
        EXPECT_EQ(outcome.result, result);
        EXPECT_EQ(outcome.errors, errors);
        EXPECT_EQ(outcome.single, single);
        EXPECT_EQ(outcome.text, before);
        EXPECT_EQ(QueltEeVarEffLeaf::cast(tree->getNode())->getVarEff(), effectivity);
    }
    [[nodiscard]] QueltEeVarEffLeaf* good() const { return leafOf(serial(world.other, {{5, 9, 1, 1}})); }
    [[nodiscard]] QueltEeVarEffLeaf* bad() const { return leafOf(serial(world.other, {{6, 9, 1, 1}})); }

    BranchingWorld world;
    QueltEePredefEff change{"ECO-1", guidOf(30)};
    QueltEeBasicEff basic{"EFF-7", guidOf(31)};
    QueltEeBasicEff another{"EFF-8", guidOf(32)};
};

const std::string s_badElement = s_noElement + std::string("6");

TEST_F(Branching, isRegisteredBelowTheVisitors) {
    Visitor visitor(world.context);
    EXPECT_STREQ(Visitor::sType()->getName(), "QueltMigTransformSerialToTreeSeriesVisitor");
    EXPECT_EQ(Visitor::sType()->getParent(), QueltEeNodeVisitor::sType());
    EXPECT_EQ(visitor.dType(), Visitor::sType());
    QueltInObject& object = visitor;
    EXPECT_EQ(Visitor::cast(object), &visitor);
    EXPECT_EQ(Visitor::cast(*world.truck), nullptr);
    EXPECT_EQ(visitor.singleSelectionMade(), 0);
}

TEST_F(Branching, eachIntervalBecomesASelection) {
    struct Row {
        std::initializer_list<Interval> intervals;
        const char* text;
        bool single;
    };
    const Row rows[] = {{{}, "Line in {}", false},
                        {{{5, 5, 1, 1}, {7, 9, 1, 0}}, "Line in [5] | [7, 9]", true},
                        {{{7, 9, 1, 0}, {5, 5, 1, 1}, {7, 9, 1, 1}}, "Line in [7, 9] | [5] | [7, 9]", true},
                        {{{5, 5, 0, 0}}, "Line in [5]", true}, // the flags of equal bounds do not count
                        {{{5, 9, 0, 1}}, "Line in (5, 9]", false},
                        {{{5, 9, 0, 0}}, "Line in (5, 9]", false},
                        {{{7, s_open, 1, 1}}, "Line in [7, +inf]", false},
                        {{{7, s_open, 0, 0}}, "Line in (7, +inf]", false},
                        {{{s_open, 9, 1, 1}}, "Line in [1, 9]", false}, // from the root
                        {{{s_open, 9, 0, 1}}, "Line in (1, 9]", false},
                        {{{s_open, 1, 1, 1}}, "Line in [1, 1]", false},
                        {{{8, 9, 1, 1}}, "Line in [8, 9]", false}, // another branch, taken as given
                        {{{9, 5, 1, 1}}, "Line in [9, 5]", false}};
    for (const Row& row : rows) {
        const Outcome outcome = branch(serial(world.other, row.intervals));
        EXPECT_EQ(outcome.result, S_OK);
        EXPECT_EQ(outcome.text, row.text);
        EXPECT_EQ(outcome.single, row.single) << row.text;
        EXPECT_EQ(outcome.errors, Messages{});
    }
}

TEST_F(Branching, negationAndNoVariableAreCarriedOver) {
    for (const bool isNegated : {false, true}) {
        for (const bool hasNoVar : {false, true}) {
            auto* const effectivity = serial(world.other, {{5, 9, 1, 1}});
            if (isNegated) {
                effectivity->opNot();
            }
            if (hasNoVar) {
                effectivity->switchNoVar();
            }
            auto* const leaf = leafOf(effectivity);
            const OwnedTree tree(leaf->getNodeRef());
            EXPECT_EQ(visit(*leaf).result, S_OK);
            ASSERT_NE(QueltEeTreeSeriesEff::cast(leaf->getVarEff()), nullptr);
            EXPECT_EQ(leaf->getVarEff()->isNegated() != 0, isNegated);
            EXPECT_EQ(leaf->getVarEff()->getNoVar() != 0, hasNoVar);
        }
    }
}

TEST_F(Branching, theExternalTypeSaysWhichTree) {
    EXPECT_EQ(branch(serial(world.unit, {{5, 9, 1, 1}})).text, "Line in [5, 9]");
    EXPECT_EQ(branch(serial(world.other, {{5, 9, 1, 1}})).text, "Line in [5, 9]");
    EXPECT_EQ(branch(serial(world.lot, {{1, 2, 1, 1}})).text, "Plant in [1, 2]");
    const Outcome counter = branch(serial(world.counter, {{5, 5, 1, 1}, {6, 9, 1, 0}}));
    EXPECT_EQ(counter.result, S_OK);
    EXPECT_EQ(counter.text, "Counter in [5, 5] | [6, 9)") << "a unit counter is left alone";
    EXPECT_FALSE(counter.single);
    QueltEeSerialVar looseCounter("Loose", guidOf(40), QueltEeSerialVar::SerialExternalType::unitCounter);
    EXPECT_EQ(branch(serial(&looseCounter, {{5, 5, 1, 1}})).result, S_OK) << "whoever holds it";
}

TEST_F(Branching, takesTheDictionarysFirstTreeWithTheNumber) {
    auto* const second = new QueltEeTreeSeriesVar("Second", guidOf(41), 18U);
    BranchingWorld::addElements(*second, {{6, 0}});
    ASSERT_EQ(world.truck->addVariable(second), S_OK);
    expectFailure(serial(world.other, {{6, 6, 1, 1}}), E_FAIL, {s_badElement}, true);
}

TEST_F(Branching, otherCriteriaStayAsTheyAre) {
    QueltEeCatOptionVar engine("Engine", guidOf(42));
    QueltEeVarEff* const others[] = {new QueltEeOptionEff(&engine), new QueltEeTreeSeriesEff(*world.line),
                                     new QueltEeDateEff, new SixthEff};
    for (QueltEeVarEff* const effectivity : others) {
        auto* const leaf = leafOf(effectivity);
        const OwnedTree tree(leaf->getNodeRef());
        const Outcome outcome = visit(*leaf);
        EXPECT_EQ(outcome.result, S_OK);
        EXPECT_EQ(outcome.errors, Messages{});
        EXPECT_EQ(leaf->getVarEff(), effectivity);
    }
    EXPECT_EQ(branch(nullptr).result, S_OK) << "a leaf without effectivity has no series";
}

TEST_F(Branching, sequenceNumbersAreLookedUpUnsignedAndShownSigned) {
    EXPECT_EQ(world.line->addElement(4294967295U, 9), S_OK);
    world.line->m_asked.clear();
    EXPECT_EQ(branch(serial(world.other, {{-1, -1, 1, 1}})).text, "Line in [4294967295]");
    EXPECT_EQ(world.line->m_asked, std::vector<unsigned int>{4294967295U});
    EXPECT_EQ(branch(serial(world.other, {{5, -1, 1, 1}})).text, "Line in [5, 4294967295]");
    expectFailure(serial(world.other, {{-2, 9, 1, 1}}), E_FAIL, {s_noElement + std::string("-2")});
    expectFailure(serial(world.other, {{-2147483647 - 1, 9, 1, 1}}), E_FAIL,
                  {s_noElement + std::string("-2147483648")});
}

TEST_F(Branching, anOpenLowerEndIsLookedUpLikeANumber) {
    expectFailure(serial(world.other, {{-s_open, 9, 1, 1}}), E_FAIL,
                  {s_noElement + std::string("-2000000000")});
    expectFailure(serial(world.other, {{5, -s_open, 1, 1}}), E_FAIL,
                  {s_noElement + std::string("-2000000000")});
    expectFailure(serial(world.other, {{s_open, s_open, 1, 1}}), E_FAIL,
                  {s_noElement + std::string("2000000000")}, true); // equal bounds are no open ends
    EXPECT_EQ(world.line->addElement(2294967296U, 9), S_OK);        // the same bits
    EXPECT_EQ(branch(serial(world.other, {{-s_open, s_open, 1, 1}})).text, "Line in [2294967296, +inf]");
}

TEST_F(Branching, aMissingElementIsNamed) {
    expectFailure(serial(world.other, {{6, 9, 1, 1}}), E_FAIL, {s_badElement});
    expectFailure(serial(world.other, {{5, 6, 1, 1}}), E_FAIL, {s_badElement});
    expectFailure(serial(world.other, {{6, 6, 1, 1}}), E_FAIL, {s_badElement}, true);
    expectFailure(serial(world.other, {{5, 9, 1, 1}, {7, 7, 1, 1}, {6, 4, 1, 1}, {2, 2, 1, 1}}), E_FAIL,
                  {s_badElement}, true); // the first that fails ends the visit
    expectFailure(serial(world.vanUnit, {{s_open, 9, 1, 1}}), E_FAIL,
                  {s_noElement + std::string("2000000000")}); // a tree without root
}

TEST_F(Branching, aSeriesNeedsADictionaryWithItsTree) {
    expectFailure(serial(&world.loose, {{5, 9, 1, 1}}), E_FAIL,
                  {"ERROR : unexpected to have a series without holder dico"});
    expectFailure(serial(world.vanLot, {{1, 2, 1, 1}}), E_FAIL,
                  {"ERROR : unexpected to not have the TreeSeriesVar at that step... Check migration "
                   "algorithm."});
    expectFailure(serial(nullptr, {{5, 9, 1, 1}}), E_FAIL, {"ERROR : unexpected"});
}

TEST_F(Branching, aFailingLookUpIsPassedUp) {
    world.line->m_failsAt = 7;
    const Messages errors{"ERROR : getChild FAILED"};
    expectFailure(serial(world.other, {{7, 7, 1, 1}}), E_NOTIMPL, errors, true);
    expectFailure(serial(world.other, {{7, 9, 1, 1}}), E_NOTIMPL, errors);
    expectFailure(serial(world.other, {{5, 7, 1, 1}}), E_NOTIMPL, errors);
    EXPECT_EQ(branch(serial(world.other, {{5, 9, 1, 1}})).result, S_OK);
}

TEST_F(Branching, aSelectionOfForeignElementsIsRefused) {
    QueltEeTreeSeriesVar foreign("Line", guidOf(15), 18U);
    BranchingWorld::addElements(foreign, {{1, 0}, {5, 1}, {9, 5}});
    world.line->m_elementsOf = &foreign;
    const Messages errors{"ERROR: setSelection FAILED"};
    expectFailure(serial(world.other, {{5, 5, 1, 1}}), E_INVALIDARG, errors, true);
    expectFailure(serial(world.other, {{5, 9, 1, 1}}), E_INVALIDARG, errors);
}

TEST_F(Branching, intervalsThatCannotBeReadFail) {
    auto* const effectivity = serial<SerialEffDouble>(world.other, {});
    effectivity->m_getResult = E_UNEXPECTED;
    expectFailure(effectivity, E_UNEXPECTED, {"ERROR : getIntervals FAILED"});
}

/// An interval whose copy is something else, or nothing.
class Shifty : public QueltInSerialInterval {
public:
    explicit Shifty(bool isCopied) : m_isCopied(isCopied) {}
    [[nodiscard]] QueltInObjectVal* clone(QueltInObjectVal* /*reuse*/) const override {
        return m_isCopied ? new QueltInIntHolder(5) : nullptr;
    }

private:
    bool m_isCopied;
};

/// Gives out [5, 5], then what is no interval.
class ShiftySerialEff : public QueltEeSerialEff {
public:
    using QueltEeSerialEff::QueltEeSerialEff;
    long getIntervals(QueltInListVal& intervals) const override {
        QueltInSerialInterval interval;
        interval.setInterval(5, 1, 5, 1);
        EXPECT_NE(intervals.PutBack(interval), nullptr) << "the list takes intervals";
        EXPECT_EQ(intervals.PutBack(QueltInIntHolder(1)), nullptr) << "and nothing else";
        intervals.PutBack(Shifty(m_givesCopies));
        return S_OK;
    }
    bool m_givesCopies = true;
};

TEST_F(Branching, whatIsNoIntervalIsRefused) {
    for (const bool givesCopies : {true, false}) {
        auto* const effectivity = new ShiftySerialEff(world.other);
        effectivity->m_givesCopies = givesCopies;
        expectFailure(effectivity, E_FAIL, {"ERROR : unexpected cast failure."}, true);
    }
}

/// A selection that takes no bounds.
class SelectionDouble : public QueltEeTreeSeriesSelection {
public:
    long setSingleSelection(const QueltEeTreeSeriesSelectionBound& bound) override {
        return m_single < 0 ? m_single : QueltEeTreeSeriesSelection::setSingleSelection(bound);
    }
    long setFromBound(const QueltEeTreeSeriesSelectionBound& bound) override {
        return m_from < 0 ? m_from : QueltEeTreeSeriesSelection::setFromBound(bound);
    }
    long addToBound(const QueltEeTreeSeriesSelectionBound& bound) override {
        return m_to < 0 ? m_to : QueltEeTreeSeriesSelection::addToBound(bound);
    }
    long m_single = S_OK;
    long m_from = S_OK;
    long m_to = S_OK;
};

TEST_F(Branching, boundsThatASelectionRefusesFail) {
    struct Row {
        int a;
        int b;
        SelectionDouble selection;
        long result;
        const char* error;
    };
    const auto failing = [](long SelectionDouble::*which, long result) {
        SelectionDouble selection;
        selection.*which = result;
        return selection;
    };
    Row rows[] = {{5, 5, failing(&SelectionDouble::m_single, E_NOTIMPL), E_NOTIMPL,
                   "ERROR : setSingleSelection for SubTree FAILED, unexpected"},
                  {5, 9, failing(&SelectionDouble::m_from, E_UNEXPECTED), E_UNEXPECTED,
                   "ERROR : setFromBound for SubTree FAILED, unexpected"},
                  {s_open, 9, failing(&SelectionDouble::m_from, E_UNEXPECTED), E_UNEXPECTED,
                   "ERROR : setFromBound for SubTree FAILED, unexpected"},
                  {5, 9, failing(&SelectionDouble::m_to, s_coreFailure), s_coreFailure,
                   "ERROR : addToBound for SubTree FAILED, unexpected"}};
    for (Row& row : rows) {
        QueltInSerialInterval interval;
        interval.setInterval(row.a, 1, row.b, 1);
        const CapturedErrors captured;
        EXPECT_EQ(quelt::selectInterval(*world.line, interval, row.selection), row.result);
        EXPECT_EQ(captured.texts(), Messages{row.error});
    }
    SelectionDouble fromOnly = failing(&SelectionDouble::m_to, s_coreFailure);
    QueltInSerialInterval open;
    open.setInterval(5, 1, s_open, 1);
    EXPECT_EQ(quelt::selectInterval(*world.line, open, fromOnly), S_OK) << "no to-bound, nothing to refuse";
}

TEST_F(Branching, childrenAreVisitedUpToTheFirstThatFails) {
    const OwnedTree tree(anyOf({good(), notOf(allOf({good(), notOf(bad()), good()})), good()})->getNodeRef());
    const Outcome outcome = visit(*tree->getNode());
    EXPECT_EQ(outcome.result, E_FAIL);
    EXPECT_EQ(outcome.errors,
              (Messages{s_badElement, "ERROR : childrenAcceptVisitor FAILED",
                        "ERROR : an error happened while processing AND node.",
                        "ERROR : childrenAcceptVisitor FAILED",
                        "ERROR : an error happened while processing AND node."})); // the OR's, too
    EXPECT_EQ(outcome.text, "OR(Line in [5, 9], NOT(AND(Line in [5, 9], NOT(Other in [6, 9]), "
                            "Other in [5, 9])), Other in [5, 9])");
}

TEST_F(Branching, resultsOfChildrenArePassedUp) {
    const auto refusing = [] { return new Refusing; };
    QueltEeNode* const groups[] = {allOf({refusing()}), anyOf({refusing()}), notOf(refusing())};
    const char* const errors[] = {"ERROR : an error happened while processing AND node.",
                                  "ERROR : an error happened while processing AND node.",
                                  "ERROR : childrenAcceptVisitor FAILED"};
    for (int i = 0; i < 3; ++i) {
        const OwnedTree tree(groups[i]->getNodeRef());
        const Outcome outcome = visit(*tree->getNode());
        EXPECT_EQ(outcome.result, s_coreFailure);
        EXPECT_EQ(outcome.errors, Messages{errors[i]});
    }
}

TEST_F(Branching, whatHasNoSeriesIsASuccess) {
    QueltEeNode* const nodes[] = {new QueltEeTrue, new QueltEeFalse, new QueltEeAndOp,
                                  new QueltEeOrOp, new QueltEeNotOp, new QueltEeRestrictionEffLeaf("text")};
    for (QueltEeNode* const node : nodes) {
        const OwnedTree tree(node->getNodeRef());
        const std::string before = textOf(*node);
        const Outcome outcome = visit(*node);
        EXPECT_EQ(outcome.result, S_OK) << before;
        EXPECT_EQ(outcome.errors, Messages{});
        EXPECT_EQ(outcome.text, before);
    }
}

TEST_F(Branching, belowANotDomainSeriesStayFlat) {
    auto* const domain = new QueltEeNotDomainOp;
    EXPECT_EQ(domain->setChildRef(*bad()->getNodeRef()), S_OK);
    const OwnedTree tree(domain->getNodeRef());
    const Outcome outcome = visit(*domain);
    EXPECT_EQ(outcome.result, S_OK);
    EXPECT_EQ(outcome.text, "NOTDOMAIN(Other in [6, 9])");
}

TEST_F(Branching, everyOperationHasATraceScope) {
    setTree(change, good());
    auto* const domain = new QueltEeNotDomainOp;
    EXPECT_EQ(domain->setChildRef(*good()->getNodeRef()), S_OK);
    const OwnedTree tree(allOf({anyOf({new QueltEeTrue, new QueltEeFalse}), domain, notOf(good()),
                                new QueltEeEffLeaf(&change, nullptr), new QueltEeRestrictionEffLeaf("text")})
                             ->getNodeRef());
    const CapturedTrace captured;
    {
        Visitor visitor(world.context);
        EXPECT_EQ(tree->getNode()->acceptVisitor(visitor), S_OK);
        EXPECT_EQ(visitor.singleSelectionMade(), 0);
    }
    EXPECT_EQ(captured.texts(), (Messages{"> QueltMigTransformSerialToTreeSeriesVisitor",
                                          "< QueltMigTransformSerialToTreeSeriesVisitor",
                                          "> visitAndOp",
                                          "> visitOrOp",
                                          "> visitTrue",
                                          "< visitTrue",
                                          "> visitFalse",
                                          "< visitFalse",
                                          "< visitOrOp",
                                          "> visitNotDomainOp",
                                          "< visitNotDomainOp",
                                          "> visitNotOp",
                                          "> visitVarEffLeaf",
                                          "< visitVarEffLeaf",
                                          "< visitNotOp",
                                          "> visitEffLeaf",
                                          "> visitVarEffLeaf",
                                          "< visitVarEffLeaf",
                                          "< visitEffLeaf",
                                          "> visitRestrictionEffLeaf",
                                          "< visitRestrictionEffLeaf",
                                          "< visitAndOp",
                                          "> singleSelectionMade",
                                          "< singleSelectionMade",
                                          "> ~QueltMigTransformSerialToTreeSeriesVisitor",
                                          "< ~QueltMigTransformSerialToTreeSeriesVisitor"}));
    for (const QueltInTraceLine& line : captured.lines()) {
        EXPECT_EQ(line.className, "QueltMigTransformSerialToTreeSeriesVisitor");
        EXPECT_EQ(line.domainName, "QueltDataMigration");
        EXPECT_GT(line.lineNumber, 0);
    }
}

TEST_F(Branching, namesItsSourceFileInErrorReports) {
    const OwnedTree tree(bad()->getNodeRef());
    const CapturedErrors captured;
    Visitor visitor(world.context);
    EXPECT_EQ(tree->getNode()->acceptVisitor(visitor), E_FAIL);
    ASSERT_EQ(captured.lines().size(), 2U);
    EXPECT_TRUE(captured.lines().front().text.starts_with(
        "[ERROR] QueltDataMigration.m/src/QueltMigTransformSerialToTreeSeriesVisitor.cpp("))
        << captured.lines().front().text;
}

TEST_F(Branching, theExpressionOfAnEffectivityIsRewrittenToo) {
    setTree(basic, anyOf({good(), leafOf(serial(world.lot, {{2, 2, 1, 1}}))}));
    const OwnedTree tree((new QueltEeEffLeaf(&basic, world.truck))->getNodeRef());
    const Outcome outcome = visit(*tree->getNode());
    EXPECT_EQ(outcome.result, S_OK);
    EXPECT_TRUE(outcome.single);
    EXPECT_EQ(expressionOf(basic), "generic(OR(Line in [5, 9], Plant in [2]))");
    const Outcome again = visit(*tree->getNode());
    EXPECT_EQ(again.result, S_OK);
    EXPECT_FALSE(again.single) << "there is nothing left to be done";
    EXPECT_EQ(expressionOf(basic), "generic(OR(Line in [5, 9], Plant in [2]))");
}

TEST_F(Branching, multiModelExpressionsOfEffectivitiesAreRewrittenToo) {
    setTree(basic, good());
    auto* const effectivity = new QueltEeEffectivityExpression;
    EXPECT_EQ(effectivity->setGlobalCriteria(good()->getNodeRef()), S_OK);
    QueltEeNodeRef* inherited = (new QueltEeEffLeaf(&basic, world.truck))->getNodeRef();
    QueltEeNodeRef* own = notOf(good())->getNodeRef();
    EXPECT_EQ(effectivity->setModelCriteria(*world.truck,
                                            new QueltEeMultiModelExpression::ModelCriteria(&inherited, &own)),
              S_OK);
    setTree(another, leafOf(serial(world.other, {{7, 9, 1, 1}})));
    QueltInObject* object = &another;
    EXPECT_EQ(effectivity->addOperation(QueltEeExpressionOperation::OperationKind::apply, object), S_OK);
    QueltEeExpression* expression = effectivity;
    change.setExpr(expression);
    const OwnedTree tree((new QueltEeEffLeaf(&change, nullptr))->getNodeRef());
    EXPECT_EQ(visit(*tree->getNode()).result, S_OK);
    EXPECT_EQ(
        expressionOf(change),
        "effectivity(global: Line in [5, 9], Truck: own NOT(Line in [5, 9]), inherited eff(EFF-7, Truck); "
        "operations: 1 EFF-8)");
    EXPECT_EQ(expressionOf(basic), "generic(Line in [5, 9])");
    EXPECT_EQ(expressionOf(another), "generic(Line in [7, 9])") << "the operation's effectivity";
}

/// A list shows its criteria as copies, and only a filter of the service's own map stores them back.
TEST_F(Branching, listsOfEffectivitiesKeepTheirSeries) {
    const auto listOf = [&](QueltEeVarEff* criterion) {
        auto* const list = new QueltQmSpecList;
        EXPECT_EQ(list->addVarEff(criterion), S_OK);
        list->getNamedEffectivities().Put(basic);
        return list;
    };
    setTree(basic, good());
    QueltEeExpression* generic = new QueltEeGenericExpression(listOf(serial(world.other, {{5, 5, 1, 1}})),
                                                              QueltEeGenericExpression::ListMode::all);
    change.setExpr(generic);
    QueltEeExpression* filter =
        new QueltEeFilterExpression(world.truck, listOf(serial(world.other, {{6, 6, 1, 1}})));
    another.setExpr(filter);
    const OwnedTree tree((new QueltEeEffLeaf(&change, nullptr))->getNodeRef());
    const Outcome outcome = visit(*tree->getNode());
    EXPECT_EQ(outcome.result, S_OK);
    EXPECT_TRUE(outcome.single);
    EXPECT_EQ(expressionOf(change), "generic(all: Other in [5, 5], eff(EFF-7))");
    EXPECT_EQ(expressionOf(basic), "generic(Line in [5, 9])") << "named effectivities are shared";
    const OwnedTree failing((new QueltEeEffLeaf(&another, nullptr))->getNodeRef());
    const std::unique_ptr<QueltEeExpression> owner(filter); // nobody's, once the visit has failed
    EXPECT_EQ(visit(*failing->getNode()).errors, (Messages{s_badElement, "ERROR : runConstVisitor FAILED"}));
    EXPECT_FALSE(hasExpression(another));
}

TEST_F(Branching, anEffectivityNeedsNoExpression) {
    const OwnedTree tree((new QueltEeEffLeaf(&change, nullptr))->getNodeRef());
    const Outcome outcome = visit(*tree->getNode());
    EXPECT_EQ(outcome.result, S_OK);
    EXPECT_EQ(outcome.errors, Messages{});
    EXPECT_FALSE(hasExpression(change));
    const OwnedTree nothing((new QueltEeEffLeaf(nullptr, world.truck))->getNodeRef());
    const Outcome unexpected = visit(*nothing->getNode());
    EXPECT_EQ(unexpected.result, E_FAIL);
    EXPECT_EQ(unexpected.errors, Messages{"ERROR : unexpected"});
}

/// Answers every visit with a result of its own.
class ExpressionDouble : public QueltEeExpression {
public:
    explicit ExpressionDouble(long result) : m_result(result) {}
    long runConstVisitor(QueltEeNodeVisitor& /*visitor*/) const override { return m_result; }

private:
    long m_result;
};

/// Hands its expression out with a result of its own.
class EffectivityDouble : public QueltEeBasicEff {
public:
    explicit EffectivityDouble(long result) : QueltEeBasicEff("EFF-X", guidOf(50)), m_result(result) {}
    long removeExpr(QueltEeExpression*& expression) override {
        if (m_result < 0) {
            return m_result;
        }
        QueltEeBasicEff::removeExpr(expression);
        return m_result;
    }
    void setExpr(QueltEeExpression*& expression) override {
        ++m_givenBack;
        QueltEeBasicEff::setExpr(expression);
    }
    int m_givenBack = 0;

private:
    long m_result;
};

TEST_F(Branching, resultsOfAnEffectivityLeaf) {
    struct Row {
        long removed;
        std::optional<long> visited; // nothing: no expression
        long result;
        Messages errors;
        int givenBack;
    };
    const Row rows[] = {{S_OK, 3, 3, {}, 1},
                        {2, std::nullopt, 2, {}, 1},
                        {2, 3, 3, {}, 1},
                        {2, S_OK, S_OK, {}, 1},
                        {E_NOTIMPL, 3, E_NOTIMPL, {"ERROR : removeExpr FAILED"}, 0},
                        {S_OK, E_UNEXPECTED, E_UNEXPECTED, {"ERROR : runConstVisitor FAILED"}, 0}};
    for (const Row& row : rows) {
        EffectivityDouble effectivity(row.removed);
        std::unique_ptr<QueltEeExpression> lost;
        if (row.visited) {
            QueltEeExpression* expression = new ExpressionDouble(*row.visited);
            effectivity.setExpr(expression);
            effectivity.m_givenBack = 0;
            if (*row.visited < 0) {
                lost.reset(expression);
            }
        }
        const OwnedTree tree((new QueltEeEffLeaf(&effectivity, nullptr))->getNodeRef());
        const Outcome outcome = visit(*tree->getNode());
        EXPECT_EQ(outcome.result, row.result);
        EXPECT_EQ(outcome.errors, row.errors);
        EXPECT_EQ(effectivity.m_givenBack, row.givenBack);
        EXPECT_EQ(hasExpression(effectivity), row.visited.has_value() && lost == nullptr);
    }
}

TEST_F(Branching, circlesEnd) {
    setTree(basic, allOf({new QueltEeEffLeaf(&another, nullptr), good()}));
    setTree(another, anyOf({leafOf(serial(world.other, {{7, 9, 1, 1}})), new QueltEeEffLeaf(&basic, nullptr),
                            new QueltEeEffLeaf(&another, nullptr)}));
    const OwnedTree tree((new QueltEeEffLeaf(&basic, nullptr))->getNodeRef());
    const Outcome outcome = visit(*tree->getNode());
    EXPECT_EQ(outcome.result, S_OK);
    EXPECT_EQ(expressionOf(basic), "generic(AND(eff(EFF-8), Line in [5, 9]))");
    EXPECT_EQ(expressionOf(another), "generic(OR(Line in [7, 9], eff(EFF-7), eff(EFF-8)))");
}

TEST_F(Branching, afterAFailureInsideExpressionsStayOut) {
    QueltInArena arena; // what stays out is nobody's
    const QueltInArenaScope scope(arena);
    QueltEePredefEff before("ECO-2", guidOf(33));
    QueltEePredefEff upper("ECO-3", guidOf(34));
    QueltEePredefEff lower("ECO-4", guidOf(35));
    QueltEePredefEff behind("ECO-5", guidOf(36));
    setTree(before, good());
    setTree(upper, allOf({good(), new QueltEeEffLeaf(&lower, nullptr)}));
    setTree(lower, bad());
    setTree(behind, good());
    const OwnedTree tree(anyOf({new QueltEeEffLeaf(&before, nullptr), new QueltEeEffLeaf(&upper, nullptr),
                                new QueltEeEffLeaf(&behind, nullptr)})
                             ->getNodeRef());
    const Outcome outcome = visit(*tree->getNode());
    EXPECT_EQ(outcome.result, E_FAIL);
    EXPECT_EQ(outcome.errors, (Messages{s_badElement, "ERROR : runConstVisitor FAILED",
                                        "ERROR : an error happened while processing AND node.",
                                        "ERROR : runConstVisitor FAILED",
                                        "ERROR : an error happened while processing AND node."}));
    EXPECT_FALSE(hasExpression(upper));
    EXPECT_FALSE(hasExpression(lower));
    EXPECT_EQ(expressionOf(before), "generic(Line in [5, 9])") << "given back";
    EXPECT_EQ(expressionOf(behind), "generic(Other in [5, 9])") << "not come to";
}

/// Effectivities, each with an expression that refers to the next one, in the shape that `wrap` gives it.
class Chain {
public:
    using Wrap = QueltEeExpression* (*)(QueltEeEffectivity& next);
    Chain(std::size_t length, Wrap wrap, QueltEeNode* bottom) {
        for (std::size_t i = 0; i < length; ++i) {
            m_effectivities.push_back(std::make_unique<QueltEePredefEff>("ECO", guidOf(1)));
        }
        for (std::size_t i = 0; i + 1 < length; ++i) {
            QueltEeExpression* expression = wrap(*m_effectivities[i + 1]);
            m_effectivities[i]->setExpr(expression);
        }
        setTree(*m_effectivities.back(), bottom);
    }
    [[nodiscard]] QueltEeEffectivity& first() const { return *m_effectivities.front(); }
    [[nodiscard]] QueltEeEffectivity& last() const { return *m_effectivities.back(); }

private:
    std::vector<std::unique_ptr<QueltEePredefEff>> m_effectivities;
};

QueltEeExpression* asTree(QueltEeEffectivity& next) {
    return new QueltEeGenericExpression((new QueltEeEffLeaf(&next, nullptr))->getNodeRef());
}
QueltEeExpression* asList(QueltEeEffectivity& next) {
    auto* const list = new QueltQmSpecList;
    list->getNamedEffectivities().Put(next);
    return new QueltEeGenericExpression(list, QueltEeGenericExpression::ListMode::all);
}
QueltEeExpression* asFilter(QueltEeEffectivity& next) {
    auto* const list = new QueltQmSpecList;
    list->getNamedEffectivities().Put(next);
    return new QueltEeFilterExpression(nullptr, list);
}
QueltEeExpression* asOperation(QueltEeEffectivity& next) {
    auto* const expression = new QueltEeEffectivityExpression;
    QueltInObject* object = &next;
    expression->addOperation(QueltEeExpressionOperation::OperationKind::apply, object);
    return expression;
}
QueltEeExpression* asCriteria(QueltEeEffectivity& next) {
    auto* const expression = new QueltEeChangeExpression;
    expression->setGlobalCriteria((new QueltEeEffLeaf(&next, nullptr))->getNodeRef());
    return expression;
}

QueltEeExpression* asTwice(QueltEeEffectivity& next) {
    return new QueltEeGenericExpression(
        allOf({new QueltEeEffLeaf(&next, nullptr), new QueltEeEffLeaf(&next, nullptr)})->getNodeRef());
}

// Walked anew for each leaf, the last one would be come to 2 to the power of 60 times.
TEST_F(Branching, anEffectivityIsWalkedOnceWhereNothingIsTraced) {
    const Chain chain(60, asTwice, good());
    const OwnedTree tree((new QueltEeEffLeaf(&chain.first(), nullptr))->getNodeRef());
    QueltMigTransformSerialToTreeSeriesVisitor visitor(world.context);
    EXPECT_EQ(tree->getNode()->acceptVisitor(visitor), S_OK);
    EXPECT_EQ(expressionOf(chain.last()), "generic(Line in [5, 9])");
    EXPECT_TRUE(hasExpression(chain.first()));
}

// A trace shows each of the walks.
TEST_F(Branching, anEffectivityIsWalkedForEachLeafWhereATraceShowsIt) {
    const Chain chain(4, asTwice, good());
    const OwnedTree tree((new QueltEeEffLeaf(&chain.first(), nullptr))->getNodeRef());
    const QueltInTraceCapture capture(QueltInTraceCapture::Wanted::everything);
    QueltMigTransformSerialToTreeSeriesVisitor visitor(world.context);
    EXPECT_EQ(tree->getNode()->acceptVisitor(visitor), S_OK);
    const auto visits = std::count_if(capture.lines().begin(), capture.lines().end(), [](const auto& line) {
        return line.methodName == "visitVarEffLeaf" && line.level == 1;
    });
    EXPECT_EQ(visits, 8);
}

/// On a thread with the stack that threads have.
TEST_F(Branching, effectivitiesNestAsDeepAsVisitsDo) {
    constexpr std::size_t limit = QueltEeNode::s_maxVisitDepth;
    for (const Chain::Wrap wrap : {asTree, asList, asFilter, asOperation, asCriteria}) {
        std::thread([&] {
            const Chain chain(limit - 1, wrap, good()); // a leaf for each, and one for the series
            const OwnedTree tree((new QueltEeEffLeaf(&chain.first(), nullptr))->getNodeRef());
            EXPECT_EQ(visit(*tree->getNode()).result, S_OK);
            EXPECT_TRUE(hasExpression(chain.first()));
            EXPECT_EQ(expressionOf(chain.last()), "generic(Line in [5, 9])");
        }).join();
        for (const std::size_t length : {limit, limit * 4}) {
            std::thread([&] {
                QueltInArena arena;
                const QueltInArenaScope scope(arena);
                const Chain chain(length, wrap, good());
                const OwnedTree tree((new QueltEeEffLeaf(&chain.first(), nullptr))->getNodeRef());
                const Outcome outcome = visit(*tree->getNode());
                EXPECT_EQ(outcome.result, E_OUTOFMEMORY);
                EXPECT_EQ(outcome.errors, Messages(limit, "ERROR : runConstVisitor FAILED"));
                // The last visit that fits has taken the expression out of the effectivity before the limit.
                EXPECT_EQ(expressionOf(chain.last()), length == limit ? "none" : "generic(Other in [5, 9])");
            }).join();
        }
    }
}

} // namespace
